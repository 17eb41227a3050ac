#include "outside/shell/entry_file.h"

namespace harbor6 {

EntryFile::EntryFile(std::shared_ptr<WalkState> shared)
    : WalkEntry(std::move(shared)), OneForkFile(this, state) {}

EntryFile::~EntryFile() = default;

void EntryFile::itemCommitted() {
    fork.complete = true;
}

bool EntryFile::hasInteger(const std::string& key) const {
    return idFromName(key) == key_id::uncompressedSize || Item::hasInteger(key);
}

bool EntryFile::getInteger(const std::string& key, std::int64_t& value) const {
    if (idFromName(key) != key_id::uncompressedSize)
        return Item::getInteger(key, value);
    value = static_cast<std::int64_t>(fork.length);
    return true;
}

std::optional<any::time> EntryFile::itemTime() const {
    return modified;
}

bool EntryFile::setItemTime(const any::time& time) {
    if (state->building)
        modified = time;
    return state->building;
}

void EntryFile::populateIndex() const {
    if (filled)
        return;
    WalkEntry::populateIndex();
    index()[key::uncompressedSize] = key_id::uncompressedSize;
}

} // namespace harbor6

#include "harbor6/model/archive_entries.h"

#include "harbor6/model/container.h"
#include "harbor6/stream/random.h"

#include <algorithm>

namespace harbor6 {

namespace {

/// Reads a run of a walk's bytes.
class EntryInput : public stream::random::input {
public:
    EntryInput(std::shared_ptr<const WalkState> shared, std::uint64_t offset, std::uint64_t count)
        : state(std::move(shared)), start(offset), length(count) {}

    using stream::random::input::read;

    bool seek(std::uint64_t value) override {
        if (value > length)
            return false;
        next = value;
        came_short = false;
        return true;
    }
    std::uint64_t size() const override { return length; }
    /// Bytes pushed back while the last read came short were never whole: an archive in this entry ends
    /// early.
    void unread(const char* bytes, unsigned count) override {
        if (came_short)
            throw stream::cut_short(length, "harbor6::EntryInput");
        stream::random::input::unread(bytes, count);
    }

protected:
    unsigned _read(char* buffer, unsigned wanted) override {
        const auto there = static_cast<unsigned>(std::min<std::uint64_t>(wanted, length - next));
        const auto came = state->bytes.read(start + next, buffer, there);
        next += came;
        came_short = came < wanted;
        return came;
    }
    int _read() override {
        char byte;
        return _read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
    }
    std::uint64_t _tell() const override { return next; }

private:
    std::shared_ptr<const WalkState> state;
    std::uint64_t start;
    std::uint64_t length;
    std::uint64_t next = 0;
    bool came_short = false; ///< the last read wanted more than there was
};

/// Writes an entry's bytes behind those of the entries before it. One is open at a time.
class EntryOutput : public stream::output {
public:
    EntryOutput(std::shared_ptr<WalkState> shared, std::uint64_t& growing)
        : state(std::move(shared)), length(growing) {}

    using stream::output::write;

    void write(const char* buffer, unsigned count) override {
        state->bytes.append(buffer, count);
        length += count;
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return length; }

private:
    std::shared_ptr<WalkState> state;
    std::uint64_t& length;
};

} // namespace

EntryFork::EntryFork(File* file, std::shared_ptr<WalkState> shared)
    : SimpleFork(file), state(std::move(shared)) {}

EntryFork::~EntryFork() = default;

data::CountedInput EntryFork::input(bool /*expanding*/) const {
    return complete ? data::CountedInput(new EntryInput(state, offset, length)) : data::CountedInput();
}

data::random::CountedInput EntryFork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    return complete ? data::random::CountedInput(new EntryInput(state, offset, length))
                    : data::random::CountedInput();
}

data::CountedOutput EntryFork::output(bool /*expanding*/) {
    if (!state->building)
        return {};
    offset = state->bytes.size();
    length = 0;
    return data::CountedOutput(new EntryOutput(state, length));
}

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

using pattern::AcquiredPtr;

EntryFolder::EntryFolder(std::shared_ptr<WalkState> shared) : WalkEntry(std::move(shared)) {}

EntryFolder::~EntryFolder() = default;

std::unique_ptr<pattern::Iterator<Item*>> EntryFolder::createIterator() {
    return std::make_unique<StdVectorContainer::STLContainerIterator>(items);
}

std::unique_ptr<pattern::Iterator<const Item*>> EntryFolder::createIterator() const {
    return std::make_unique<StdVectorContainer::STLConstContainerIterator>(items);
}

Item* EntryFolder::acquireItemFromName(const std::string& wanted) {
    if (!state->building)
        return Folder::acquireItemFromName(wanted);
    const auto folder = subfolders.find(wanted);
    return folder == subfolders.end() ? nullptr : AcquiredPtr<Item>::sharing(*folder->second).detach();
}

File* EntryFolder::acquireNewFileLike(const Attributes& model, bool /*uniqueName*/) {
    AcquiredPtr<File> file(_newFile());
    file->cloneAttributes(model, true);
    return file.detach();
}

Folder* EntryFolder::acquireNewFolderFromName(const std::string& wanted, bool uniqueName) {
    if (wanted.empty())
        return AcquiredPtr<Folder>::sharing(*this).detach();
    if (const AcquiredPtr<Item> known(acquireItemFromName(wanted)); known && known->asFolder())
        return AcquiredPtr<Folder>::sharing(*known->asFolder()).detach();
    AcquiredPtr<Folder> made(Folder::acquireNewFolderFromName(wanted, uniqueName));
    subfolders.emplace(wanted, static_cast<EntryFolder*>(made.get()));
    return made.detach();
}

File* EntryFolder::_newFile() {
    if (!state->building)
        return Folder::_newFile();
    AcquiredPtr<EntryFile> file(new EntryFile(state));
    items.push_back(AcquiredPtr<Item>::sharing(*file));
    return file.detach();
}

Folder* EntryFolder::_newFolder() {
    if (!state->building)
        return Folder::_newFolder();
    if (depth == greatest_depth)
        throw un::exception("the archive's folders lie too deep in one another", "harbor6::EntryFolder");
    AcquiredPtr<EntryFolder> folder(new EntryFolder(state));
    folder->depth = depth + 1;
    items.push_back(AcquiredPtr<Item>::sharing(*folder));
    return folder.detach();
}

} // namespace harbor6

#include "archive/cab/file_item.h"

#include "archive/cab/archive.h"
#include "outside/groundwork/text.h"

#include <utility>

namespace harbor6::cab {

FileItem::FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> read)
    : record(std::move(read)), owner(archive) {}

FileItem::~FileItem() = default;

harbor6::Archive* FileItem::owningArchive() const {
    return owner;
}

bool FileItem::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || SingleForkFile::hasString(key);
}

bool FileItem::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return SingleForkFile::getString(key, value);
    value = nio::leaf(record->name, '/');
    return true;
}

bool FileItem::hasTime(const std::string& key) const {
    return idFromName(key) == key_id::modTime || SingleForkFile::hasTime(key);
}

bool FileItem::getTime(const std::string& key, any::time& value) const {
    if (idFromName(key) != key_id::modTime)
        return SingleForkFile::getTime(key, value);
    value = record->time;
    return true;
}

void FileItem::populateIndex() const {
    static bool filled = false;
    if (std::exchange(filled, true))
        return;
    Item::populateIndex();
    index()[key::name] = key_id::name;
    index()[key::modTime] = key_id::modTime;
}

Attributes::Index* FileItem::newIndex() const {
    static Index keys;
    return &keys;
}

} // namespace harbor6::cab

#include "formats/cab/cab_items.h"

#include "formats/cab/cab_archive.h"
#include "harbor6/groundwork/text.h"

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

FolderItem::FolderItem(cab::Archive* archive, const std::string& component)
    : name(component), owner(archive) {}

FolderItem::~FolderItem() = default;

harbor6::Archive* FolderItem::owningArchive() const {
    return owner;
}

bool FolderItem::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || Folder::hasString(key);
}

bool FolderItem::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Folder::getString(key, value);
    value = name;
    return true;
}

void FolderItem::populateIndex() const {
    static bool filled = false;
    if (std::exchange(filled, true))
        return;
    Item::populateIndex();
    index()[key::name] = key_id::name;
}

Attributes::Index* FolderItem::newIndex() const {
    static Index keys;
    return &keys;
}

} // namespace harbor6::cab

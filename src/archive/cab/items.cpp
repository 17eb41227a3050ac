#include "archive/cab/items.h"

#include "archive/cab/archive.h"
#include "outside/groundwork/text.h"
#include "outside/shell/shared_index.h"

namespace harbor6::cab {

namespace {

SharedIndex folder_index;
SharedIndex file_index;

} // namespace

FolderItem::FolderItem(cab::Archive* archive, const std::string& component)
    : name(component), owner(archive) {}

FolderItem::~FolderItem() = default;

harbor6::Archive* FolderItem::owningArchive() const {
    return owner;
}

void FolderItem::destroy() {
    delete this;
}

bool FolderItem::modifiable(const std::string& /*key*/) {
    return false;
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
    if (!folder_index.fillNow())
        return;
    Item::populateIndex();
    index()[key::name] = key_id::name;
}

Attributes::Index* FolderItem::newIndex() const {
    return &folder_index.keys;
}

FileItem::FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> read)
    : record(std::move(read)), owner(archive) {}

FileItem::~FileItem() = default;

harbor6::Archive* FileItem::owningArchive() const {
    return owner;
}

void FileItem::destroy() {
    delete this;
}

bool FileItem::modifiable(const std::string& /*key*/) {
    return false;
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
    if (!file_index.fillNow())
        return;
    Item::populateIndex();
    index()[key::name] = key_id::name;
    index()[key::modTime] = key_id::modTime;
}

Attributes::Index* FileItem::newIndex() const {
    return &file_index.keys;
}

} // namespace harbor6::cab

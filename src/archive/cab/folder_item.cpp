#include "archive/cab/folder_item.h"

#include "archive/cab/archive.h"

#include <utility>

namespace harbor6::cab {

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

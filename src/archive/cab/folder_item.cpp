#include "archive/cab/folder_item.h"

#include "archive/cab/archive.h"

namespace harbor6::cab {

FolderItem::FolderItem(cab::Archive* archive, const std::string& component)
    : name(component), owner(archive) {}

FolderItem::~FolderItem() = default;

harbor6::Archive* FolderItem::owningArchive() const {
    return owner;
}

bool FolderItem::modifiable(const std::string& /*key*/) {
    return false;
}

std::string FolderItem::itemName() const {
    return name;
}

} // namespace harbor6::cab

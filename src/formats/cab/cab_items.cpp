#include "formats/cab/cab_items.h"

#include "formats/cab/cab_archive.h"
#include "harbor6/groundwork/text.h"

namespace harbor6::cab {

FileItem::FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> read)
    : record(std::move(read)), owner(archive) {}

FileItem::~FileItem() = default;

harbor6::Archive* FileItem::owningArchive() const {
    return owner;
}

std::string FileItem::itemName() const {
    return nio::leaf(record->name, '/');
}

std::optional<any::time> FileItem::itemTime() const {
    return record->time;
}

FolderItem::FolderItem(cab::Archive* archive, const std::string& component)
    : name(component), owner(archive) {}

FolderItem::~FolderItem() = default;

harbor6::Archive* FolderItem::owningArchive() const {
    return owner;
}

std::string FolderItem::itemName() const {
    return name;
}

} // namespace harbor6::cab

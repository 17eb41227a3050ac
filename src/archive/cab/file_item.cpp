#include "archive/cab/file_item.h"

#include "archive/cab/archive.h"
#include "outside/groundwork/text.h"

namespace harbor6::cab {

FileItem::FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> read)
    : record(std::move(read)), owner(archive) {}

FileItem::~FileItem() = default;

harbor6::Archive* FileItem::owningArchive() const {
    return owner;
}

bool FileItem::modifiable(const std::string& /*key*/) {
    return false;
}

std::string FileItem::itemName() const {
    return nio::leaf(record->name, '/');
}

std::optional<any::time> FileItem::itemTime() const {
    return record->time;
}

} // namespace harbor6::cab

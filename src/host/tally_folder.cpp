#include "host/tally_folder.h"

#include "host/disk_target.h"
#include "host/tally_file.h"
#include "outside/groundwork/text.h"

namespace host {

TallyFolder::TallyFolder(tally& counts, std::shared_ptr<const std::string> path)
    : PlainItem(counts.format), shared(counts), folder_path(std::move(path)) {}

std::string TallyFolder::refusal(const std::string& /*name*/) {
    return too_deep ? "its path is too long" : std::string();
}

bool TallyFolder::isCreated() {
    return true;
}

harbor6::Item* TallyFolder::acquireItemFromName(const std::string& /*name*/) {
    return nullptr;
}

harbor6::File* TallyFolder::_newFile() {
    return new TallyFile(shared, folder_path);
}

harbor6::Folder* TallyFolder::_newFolder() {
    pattern::AcquiredPtr<TallyFolder> folder(new TallyFolder(shared, folder_path));
    folder->too_deep = too_deep;
    return folder.detach();
}

std::string TallyFolder::itemName() const {
    return nio::leaf(path(), '/');
}

bool TallyFolder::setItemName(const std::string& name) {
    too_deep = too_deep || path().size() + name.size() > longest_path;
    if (!name.empty() && !too_deep)
        folder_path = std::make_shared<const std::string>(disk_target::join(path(), name));
    return true;
}

} // namespace host

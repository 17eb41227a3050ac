#include "outside/shell/entry_folder.h"

#include "model/container_adaptor.h"
#include "outside/shell/entry_file.h"

namespace harbor6 {

using pattern::AcquiredPtr;

EntryFolder::EntryFolder(std::shared_ptr<WalkState> shared) : WalkEntry(std::move(shared)) {}

EntryFolder::~EntryFolder() = default;

std::unique_ptr<pattern::Iterator<Item*>> EntryFolder::createIterator() {
    using Items = std::vector<AcquiredPtr<Item>>;
    return std::make_unique<STLContainerIterator<Items, Item*, Items::iterator>>(items);
}

std::unique_ptr<pattern::Iterator<const Item*>> EntryFolder::createIterator() const {
    using Items = const std::vector<AcquiredPtr<Item>>;
    return std::make_unique<STLContainerIterator<Items, const Item*, Items::const_iterator>>(items);
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

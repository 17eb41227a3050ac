#include "harbor6/hosts/disk_folder.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/disk_file.h"
#include "harbor6/hosts/owning_iterator.h"
#include "harbor6/model/wrapper_name.h"
#include "harbor6/posix/system_error.h"
#include "harbor6/posix/temporary_files.h"

namespace host {

namespace {

/// Why the folder `path` can't be used.
std::string unusable(const std::string& path, const std::string& reason) {
    return "cannot use folder " + nio::printable(path) + ": " + reason;
}

/// Gives a folder with the temporary path `left`, which a killed process left, a free name like `name`.
void put_aside(directory_tree& target, const std::string& left, const std::string& name) {
    const auto parent = nio::stem(left, '/');
    if (target.look_up(parent, harbor6::wrapper_name) != entry_kind::folder)
        return;
    unsigned number = 2;
    while (target.look_up(parent, numbered_name(name, number)) != entry_kind::none)
        ++number;
    target.rename(left, join_path(parent, numbered_name(name, number)), false);
}

} // namespace

DiskFolder::DiskFolder(expansion_state& shared_expansion)
    : PlainItem(shared_expansion.format), expansion(shared_expansion),
      folder_path(std::make_shared<const std::string>()) {}

DiskFolder::DiskFolder(expansion_state& shared_expansion, std::shared_ptr<const std::string> path,
                       std::string reason)
    : PlainItem(shared_expansion.format), expansion(shared_expansion), folder_path(std::move(path)),
      obstacle(std::move(reason)) {}

void DiskFolder::make() {
    if (!obstacle.empty() || expansion.target.is_known(path()))
        return;
    if (!path().empty() && expansion.is_promised(nio::stem(path(), '/'), nio::leaf(path(), '/')))
        obstacle = unusable(path(), "it is not a folder");
    else if (expansion.writes_nothing)
        obstacle = expansion.imagine_folder(path());
    if (!obstacle.empty() || expansion.writes_nothing)
        return;
    try {
        expansion.target.make_folder(path());
    } catch (const fs::Exception& failure) {
        if (!expansion.target.is_known({}))
            throw; // without the top no file can be written
        obstacle = failure.message();
    }
}

std::string DiskFolder::prepareFor(const std::string& name) {
    if (auto fault = name_fault(name); !fault.empty())
        return fault;
    make();
    return obstacle;
}

pattern::AcquiredPtr<harbor6::Folder> DiskFolder::makeUnusable(const std::string& name,
                                                               const std::string& reason) const {
    return pattern::AcquiredPtr<harbor6::Folder>(
        new DiskFolder(expansion, folder_path, unusable(pathOf(name), reason)));
}

bool DiskFolder::isCreated() {
    return !obstacle.empty() || expansion.target.is_known(path());
}

void DiskFolder::create() {
    commitItem();
}

void DiskFolder::commitItem() {
    if (!expansion.folders_on_demand)
        make();
}

harbor6::Folder* DiskFolder::acquireParent() {
    if (path().empty())
        return nullptr;
    return new DiskFolder(expansion, expansion.target.intern(nio::stem(path(), '/')), {});
}

void DiskFolder::erase() {
    const uninterrupted_step one_step;
    expansion.target.remove_folder(path());
    if (path() == expansion.renamed->path())
        expansion.renamed->clear();
}

std::vector<pattern::AcquiredPtr<harbor6::Item>> DiskFolder::content() const {
    std::vector<pattern::AcquiredPtr<harbor6::Item>> items;
    if (!obstacle.empty())
        return items;
    for (const auto& name : expansion.target.names(path()))
        if (auto* const item = const_cast<DiskFolder*>(this)->acquireItemFromName(name))
            items.emplace_back(item);
    return items;
}

std::unique_ptr<pattern::Iterator<harbor6::Item*>> DiskFolder::createIterator() {
    return std::make_unique<OwningIterator<harbor6::Item*>>(content());
}

std::unique_ptr<pattern::Iterator<const harbor6::Item*>> DiskFolder::createIterator() const {
    return std::make_unique<OwningIterator<const harbor6::Item*>>(content());
}

harbor6::Item* DiskFolder::_adoptItem(harbor6::Item& item) {
    const auto* const file = dynamic_cast<DiskFile*>(&item);
    const auto* const folder = dynamic_cast<DiskFolder*>(&item);
    if (!file && !folder)
        return Folder::_adoptItem(item);
    const auto from = file ? file->path() : folder->path();
    const auto name = nio::leaf(from, '/');
    const auto to = pathOf(name);
    expansion.target.rename(from, to, expansion.take_replaceable(path(), name));
    expansion.log.moved(from, to);
    return acquireItemFromName(name);
}

std::string DiskFolder::freeFolderName(const std::string& name) {
    const bool usable = obstacle.empty() && name_fault(nameHere(name)).empty();
    return usable ? expansion.folder_name(path(), nameHere(name)) : name;
}

entry_kind DiskFolder::lookUp(const std::string& asked) const {
    const auto name = nameHere(asked);
    if (!obstacle.empty() || !name_fault(name).empty() || expansion.is_replaceable(path(), name))
        return entry_kind::none;
    if (expansion.is_promised(path(), name))
        return entry_kind::file;
    if (expansion.writes_nothing && expansion.is_imagined(pathOf(name)))
        return entry_kind::folder;
    try {
        return expansion.target.look_up(path(), name);
    } catch (const fs::Exception&) {
        // Creating it fails too, and that failure is reported.
        return entry_kind::none;
    }
}

harbor6::Item* DiskFolder::acquireItemFromName(const std::string& name) {
    switch (const auto entry = lookUp(name)) {
    case entry_kind::none:
        return nullptr;
    case entry_kind::folder:
        return new DiskFolder(expansion, expansion.target.intern(pathOf(name)), {});
    default:
        return new DiskFile(expansion, folder_path, nameHere(name), entry == entry_kind::file);
    }
}

bool DiskFolder::hasItemNamed(const std::string& name) const {
    return lookUp(name) != entry_kind::none;
}

harbor6::File* DiskFolder::_newFile() {
    return new DiskFile(expansion, folder_path);
}

harbor6::Folder* DiskFolder::_newFolder() {
    pattern::AcquiredPtr<DiskFolder> folder(new DiskFolder(expansion, folder_path, obstacle));
    folder->named = false;
    folder->left_out = left_out;
    return folder.detach();
}

std::string DiskFolder::itemName() const {
    return nio::leaf(path(), '/');
}

bool DiskFolder::setItemName(const std::string& value) {
    if (named) {
        if (path().empty() || !obstacle.empty() || !name_fault(value).empty())
            return false;
        const auto moved = join_path(nio::stem(path(), '/'), value);
        if (value == harbor6::wrapper_name)
            put_aside(expansion.target, moved, itemName());
        const uninterrupted_step one_step;
        expansion.target.rename(path(), moved, false);
        if (path() == expansion.renamed->path())
            expansion.renamed->clear();
        else
            expansion.renamed->set(path(), moved);
        folder_path = expansion.target.intern(moved);
        return true;
    }
    named = true;
    if (value.empty())
        return true;
    if (leavesOutFolders()) {
        ++left_out;
        return true;
    }
    if (path().size() + value.size() > longest_path) {
        if (obstacle.empty())
            obstacle = "its path is too long";
        return true;
    }
    if (const auto reason = name_fault(value); !reason.empty() && obstacle.empty())
        obstacle = unusable(value, reason);
    folder_path = expansion.target.intern(pathOf(expansion.renames_folders ? freeFolderName(value) : value));
    return true;
}

std::optional<fs::Spec> DiskFolder::identity() const {
    return obstacle.empty() ? expansion.target.identity(path(), {}) : std::nullopt;
}

} // namespace host

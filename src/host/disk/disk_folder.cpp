#include "host/disk/disk_folder.h"

#include "harbor6/groundwork/text.h"
#include "host/disk/disk_file.h"

namespace host {

namespace {

/// A walk over items that it holds.
template<class T>
class HeldItems : public pattern::Iterator<T> {
public:
    explicit HeldItems(std::vector<pattern::AcquiredPtr<harbor6::Item>> taken) : items(std::move(taken)) {}

    void first() override { at = 0; }
    void next() override { at += isDone() ? 0 : 1; }
    bool isDone() const override { return at == items.size(); }
    T current() override { return isDone() ? nullptr : items[at].acquire(); }

private:
    std::vector<pattern::AcquiredPtr<harbor6::Item>> items;
    std::size_t at = 0;
};

} // namespace

DiskFolder::DiskFolder(expansion_state& shared_expansion)
    : PlainItem(shared_expansion.format), expansion(shared_expansion),
      folder_path(std::make_shared<const std::string>()) {}

DiskFolder::DiskFolder(expansion_state& shared_expansion, std::shared_ptr<const std::string> path,
                       std::string reason)
    : PlainItem(shared_expansion.format), expansion(shared_expansion), folder_path(std::move(path)),
      obstacle(std::move(reason)) {}

void DiskFolder::make() {
    if (!obstacle.empty() || expansion.target.recently_open(path()))
        return;
    try {
        expansion.target.make_folder(path());
    } catch (const path_error& reason) {
        obstacle = reason.message();
    }
}

std::string DiskFolder::refusal(const std::string& name) {
    auto reason = directory_tree::name_fault(name);
    if (!reason.empty())
        return reason;
    make();
    return obstacle;
}

bool DiskFolder::isCreated() {
    return !obstacle.empty() || expansion.target.recently_open(path());
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
    expansion.target.remove_folder(path());
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
    return std::make_unique<HeldItems<harbor6::Item*>>(content());
}

std::unique_ptr<pattern::Iterator<const harbor6::Item*>> DiskFolder::createIterator() const {
    return std::make_unique<HeldItems<const harbor6::Item*>>(content());
}

harbor6::Item* DiskFolder::_adoptItem(harbor6::Item& item) {
    const auto* const file = dynamic_cast<DiskFile*>(&item);
    const auto* const folder = dynamic_cast<DiskFolder*>(&item);
    if (!file && !folder)
        return Folder::_adoptItem(item);
    const auto from = file ? file->path() : folder->path();
    const auto name = nio::leaf(from, '/');
    const auto to = directory_tree::join(path(), name);
    expansion.target.rename(from, to, expansion.take_replaceable(path(), name));
    expansion.log.moved(from, to);
    return acquireItemFromName(name);
}

entry_kind DiskFolder::look(const std::string& name) const {
    if (!obstacle.empty() || !directory_tree::name_fault(name).empty() ||
        expansion.is_replaceable(path(), name))
        return entry_kind::none;
    if (expansion.is_promised(path(), name))
        return entry_kind::file;
    try {
        return expansion.target.look(path(), name);
    } catch (const path_error&) {
        // It can't be looked at, so it can't be made either, and whoever tries hears why.
        return entry_kind::none;
    }
}

harbor6::Item* DiskFolder::acquireItemFromName(const std::string& name) {
    switch (const auto entry = look(name)) {
    case entry_kind::none:
        return nullptr;
    case entry_kind::folder:
        return new DiskFolder(expansion, expansion.target.intern(directory_tree::join(path(), name)), {});
    default:
        return new DiskFile(expansion, folder_path, name, entry == entry_kind::file);
    }
}

bool DiskFolder::hasItemNamed(const std::string& name) const {
    return look(name) != entry_kind::none;
}

harbor6::File* DiskFolder::_newFile() {
    return new DiskFile(expansion, folder_path);
}

harbor6::Folder* DiskFolder::_newFolder() {
    pattern::AcquiredPtr<DiskFolder> folder(new DiskFolder(expansion, folder_path, obstacle));
    folder->named = false;
    return folder.detach();
}

std::string DiskFolder::itemName() const {
    return nio::leaf(path(), '/');
}

bool DiskFolder::setItemName(const std::string& value) {
    if (named) {
        if (path().empty() || !obstacle.empty() || !directory_tree::name_fault(value).empty())
            return false;
        const auto moved = directory_tree::join(nio::stem(path(), '/'), value);
        expansion.target.rename(path(), moved, false);
        folder_path = expansion.target.intern(moved);
        return true;
    }
    named = true;
    if (value.empty())
        return true;
    if (path().size() + value.size() > longest_path) {
        if (obstacle.empty())
            obstacle = "its path is too long";
        return true;
    }
    if (const auto reason = directory_tree::name_fault(value); !reason.empty() && obstacle.empty())
        obstacle = "cannot use folder " + nio::printable(value) + ": " + reason;
    folder_path = expansion.target.intern(directory_tree::join(path(), value));
    return true;
}

std::optional<fs::Spec> DiskFolder::identity() const {
    return obstacle.empty() ? expansion.target.identity(path(), {}) : std::nullopt;
}

} // namespace host

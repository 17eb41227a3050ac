#include "harbor6/groundwork/text.h"
#include "harbor6/model/container.h"
#include "harbor6/model/file.h"
#include "harbor6/model/folder.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

#include <deque>

// Making new items in a folder, and moving existing ones into it.

namespace harbor6 {

using pattern::AcquiredPtr;

namespace {

/// Marks an item as being moved, for as long as this lives.
class Adopting {
public:
    explicit Adopting(Item& adopted) : item(adopted), before(adopted.adopting) { item.adopting = true; }
    Adopting(const Adopting&) = delete;
    Adopting& operator=(const Adopting&) = delete;
    ~Adopting() { item.adopting = before; }

private:
    Item& item;
    const bool before;
};

} // namespace

void Folder::makeNameUnique(std::string& name) const {
    const std::string base = name;
    for (std::uint64_t n = 1; hasItemNamed(name); ++n)
        name = base + "." + un::write(n, 10, 1);
}

File* Folder::acquireNewFileFromName(const std::string& name, bool uniqueName) {
    AcquiredPtr<File> file(_newFile());
    std::string free = name;
    if (uniqueName)
        makeNameUnique(free);
    file->setString(key::name, free);
    return file.detach();
}

Folder* Folder::acquireNewFolderFromName(const std::string& name, bool uniqueName) {
    AcquiredPtr<Folder> folder(_newFolder());
    std::string free = name;
    if (uniqueName)
        makeNameUnique(free);
    if (!folder->setString(key::name, free))
        throw un::implemented(
            "harbor6::Folder::acquireNewFolderFromName: this format doesn't support setting a "
            "folder's name");
    return folder.detach();
}

Folder* Folder::acquireCreatedFolder(const std::string& name) {
    AcquiredPtr<Folder> folder(acquireNewFolderFromName(name, false));
    folder->commitItem();
    return folder.detach();
}

AcquiredPtr<Folder> Folder::acquirePathParent(const std::string& path, bool create) {
    const auto stem = nio::stem(path, '/');
    return stem.empty() ? AcquiredPtr<Folder>::sharing(*this)
                        : AcquiredPtr<Folder>(acquireNewFolderFromPath(stem, create));
}

Item* Folder::acquireItemFromPath(const std::string& path) {
    const auto parent = acquirePathParent(path, false);
    return parent ? parent->acquireItemFromName(nio::leaf(path, '/')) : nullptr;
}

File* Folder::acquireNewFileFromPath(const std::string& path, bool create) {
    const auto parent = acquirePathParent(path, create);
    if (!parent)
        return nullptr;
    AcquiredPtr<File> file(parent->acquireNewFileFromName(nio::leaf(path, '/'), false));
    if (create && file && !file->isCreated())
        file->create();
    return file.detach();
}

Folder* Folder::acquireNewFolderFromPath(const std::string& path, bool create) {
    const auto parent = acquirePathParent(path, true);
    if (!parent)
        return nullptr;
    AcquiredPtr<Folder> folder(parent->acquireNewFolderFromName(nio::leaf(path, '/'), false));
    if (create && folder && !folder->isCreated())
        folder->create();
    return folder.detach();
}

File* Folder::acquireNewFileLike(const Attributes& model, bool uniqueName) {
    auto target = AcquiredPtr<Folder>::sharing(*this);
    auto name = model.string(key::name);
    if (!uniqueName) {
        if (const AcquiredPtr<Item> existing(acquireItemFromName(name)); existing) {
            if (!shell().client().targetNameConflict(name, *existing, false, model, &target) || !target)
                return nullptr;
            if (AcquiredPtr<Item>(target->acquireItemFromName(name)))
                throw un::exception("targetNameConflict failed to resolve name conflct", "un");
        }
    }
    AcquiredPtr<File> file(target->acquireNewFileFromName(name, uniqueName));
    file->cloneAttributes(model, false);
    return file.detach();
}

bool Folder::settleFolderName(const Item& asker, const Attributes& model, std::string& name,
                              AcquiredPtr<Folder>& target, AcquiredPtr<Folder>& existing) {
    AcquiredPtr<Item> found(target->acquireItemFromName(name));
    if (!found)
        return true;
    const bool folders = found->asFolder() != nullptr;
    if (!asker.shell().client().targetNameConflict(name, *found, folders, model, &target) || !target)
        return false;
    found = target->acquireItemFromName(name);
    if (found && !found->asFolder())
        throw un::exception("targetNameConflict failed to resolve conflict", "un");
    if (found)
        existing = AcquiredPtr<Folder>::sharing(*found->asFolder());
    return true;
}

Folder* Folder::acquireNewFolderLike(const Attributes& model, bool uniqueName) {
    auto target = AcquiredPtr<Folder>::sharing(*this);
    auto name = model.string(key::name);
    AcquiredPtr<Folder> folder;
    if (!uniqueName && !settleFolderName(*this, model, name, target, folder))
        return nullptr;
    if (!folder) {
        folder = target->acquireNewFolderFromName(name, uniqueName);
        folder->cloneAttributes(model, false);
    }
    return folder.detach();
}

void Folder::adoptItem(Item& item) {
    AcquiredPtr<Item> adopted(acquireAdoptedItem(item));
}

Item* Folder::acquireAdoptedItem(Item& item) {
    const AcquiredPtr<Folder> parent(item.acquireParent());
    if (parent && parent->isSameItem(this))
        return AcquiredPtr<Item>::sharing(item).detach();
    Folder* const folder = item.asFolder();
    if (folder && !mayHoldFolder(folder))
        throw un::exception("harbor6::Folder::acquireAdoptedItem: cannot move a folder into itself", "un");

    const Adopting mark(item);
    std::string name;
    if (item.getString(key::name, name)) {
        AcquiredPtr<Item> existing(acquireItemFromName(name));
        if (existing) {
            Folder* const into = existing->asFolder();
            const bool both = folder && into;
            if (!shell().client().targetNameConflict(name, *existing, both, item, nullptr))
                return nullptr;
            if (both && existing->isCreated() && name == item.string(key::name)) {
                into->adoptContent(*folder);
                return existing.detach();
            }
            item.retarget(name);
        }
    }
    return _adoptItem(item);
}

void Folder::adoptContent(Container& source) {
    AcquiredPtr<ContainerAdaptor> adopted(acquireAdoptedContent(source));
}

ContainerAdaptor* Folder::acquireAdoptedContent(Container& source) {
    // All items are taken before the first one moves: moving changes what is walked.
    std::deque<AcquiredPtr<Item>> waiting;
    ItemIterator items(source);
    for (items.first(); !items.isDone(); items.next())
        waiting.emplace_back(items.current());
    AcquiredPtr<ContainerAdaptor> adopted(new StdVectorContainer);
    for (; !waiting.empty(); waiting.pop_front())
        if (const AcquiredPtr<Item> result(acquireAdoptedItem(*waiting.front())); result)
            adopted->containerAdd(*result);
    return adopted.detach();
}

Item* Folder::_adoptItem(Item& item) {
    AcquiredPtr<Item> added(acquireAddedItem(item, false));
    if (added)
        item.erase();
    return added.detach();
}

bool Folder::mayHoldFolder(const Folder* folder) const {
    auto here = AcquiredPtr<Folder>::sharing(const_cast<Folder&>(*this));
    while (here) {
        if (here->isSameItem(folder))
            return false;
        here = here->acquireParent();
    }
    return true;
}

} // namespace harbor6

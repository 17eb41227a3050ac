#include "harbor6/model/folder.h"

#include "harbor6/model/archive.h"

// What is common to all folders, and queries of their content. folder_items.cpp makes and moves items,
// folder_copying.cpp copies and expands them.

namespace harbor6 {

using pattern::AcquiredPtr;

Folder::~Folder() = default;

const Folder* Folder::asFolder() const {
    return this;
}

Folder* Folder::asFolder() {
    return this;
}

void Folder::RemoveItem(Item* /*removedItem*/) {
    throw un::implemented("void harbor6::Folder::RemoveItem(harbor6::Item* removedItem)");
}

Item* Folder::acquireMatchingItem(const Item& other) {
    std::string name;
    return other.getString(key::name, name) ? acquireItemFromName(name) : nullptr;
}

Item* Folder::acquireItemFromName(const std::string& name) {
    if (archive() && !(archive()->mode() & Archive::mode_search))
        return nullptr;
    ConstItemIterator items(*this);
    for (items.first(); !items.isDone(); items.next()) {
        AcquiredPtr<const Item> item(items.current());
        if (item->string(key::name) == name)
            return const_cast<Item*>(item.detach());
    }
    return nullptr;
}

bool Folder::hasItemNamed(const std::string& name) const {
    return static_cast<bool>(AcquiredPtr<Item>(const_cast<Folder*>(this)->acquireItemFromName(name)));
}

bool Folder::getTotalItems(std::int64_t& count, bool deep) const {
    if (!deep)
        return false;
    bool known = true;
    ConstItemIterator items(*this);
    for (items.first(); !items.isDone() && known; items.next()) {
        const AcquiredPtr<const Item> item(items.current());
        if (const Folder* const folder = item->asFolder())
            known = folder->getTotalItems(count, true);
        ++count;
    }
    return known;
}

bool Folder::getContainsLocked(bool& out, bool deep) const {
    return flagInside(key::locked, &Folder::getContainsLocked, out, deep);
}

bool Folder::getContainsEncrypted(bool& out, bool deep) const {
    return flagInside(key::encrypted, &Folder::getContainsEncrypted, out, deep);
}

bool Folder::flagInside(const char* key, bool (Folder::*inside)(bool&, bool) const, bool& out,
                        bool deep) const {
    if (!deep && !available(key))
        return false;
    if (getBoolean(key, out) && out)
        return true;
    if (!deep)
        return false;
    out = false;
    ConstItemIterator items(*this);
    for (items.first(); !items.isDone() && !out; items.next()) {
        const AcquiredPtr<const Item> item(items.current());
        const Folder* const folder = item->asFolder();
        if (!(folder ? (folder->*inside)(out, true) : item->getBoolean(key, out)))
            break;
    }
    return true;
}

bool Folder::getUncompressedSize(std::int64_t& size, bool deep) const {
    return sizeInside(key::uncompressedSize, size, deep);
}

bool Folder::getCompressedSize(std::int64_t& size, bool deep) const {
    return sizeInside(key::compressedSize, size, deep);
}

bool Folder::sizeInside(const char* key, std::int64_t& size, bool deep) const {
    if (!deep)
        return false;
    bool known = true;
    ConstItemIterator items(*this);
    for (items.first(); !items.isDone() && known; items.next())
        known = AcquiredPtr<const Item>(items.current())->getInteger(key, size);
    return known;
}

File* Folder::_newFile() {
    throw un::implemented("harbor6::Folder::_newFile()");
}

Folder* Folder::_newFolder() {
    throw un::implemented("harbor6::Folder::_newFolder()");
}

} // namespace harbor6

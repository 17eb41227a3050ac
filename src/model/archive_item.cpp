#include "model/archive_item.h"

#include "outside/shell/archive.h"

namespace harbor6 {

ArchiveItem::~ArchiveItem() = default;

Archive* ArchiveItem::archive() {
    return owningArchive();
}

const Format& ArchiveItem::format() const {
    return const_cast<const Archive*>(owningArchive())->format();
}

Format& ArchiveItem::format() {
    return const_cast<Format&>(const_cast<const ArchiveItem*>(this)->format());
}

HarborShell& ArchiveItem::shell() const {
    return owningArchive()->shell();
}

std::uint64_t ArchiveItem::position() {
    return 0;
}

void ArchiveItem::commitItem() {
    owningArchive()->setArchiveFile(this);
    itemCommitted();
}

Folder* ArchiveItem::acquireParent() {
    Archive* const parent = owningArchive();
    parent->addReference();
    return parent;
}

bool ArchiveItem::exists() {
    const pattern::AcquiredPtr<Folder> parent(acquireParent());
    std::string name;
    return parent && getString(key::name, name) && parent->hasItemNamed(name);
}

void ArchiveItem::itemCommitted() {}

} // namespace harbor6

#include "harbor6/model/item.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/format.h"
#include "harbor6/shell/structures.h"

namespace harbor6 {

Folder* Containable::acquireParent() {
    return nullptr;
}

void Containable::moveTo(Folder& /*target*/) {
    throw un::exception("harbor6::Containable::moveTo(): not a movable Item", "un");
}

bool Containable::isCreated() {
    return true;
}

bool Containable::exists() {
    return false;
}

void Containable::create() {}

void Containable::erase() {
    throw un::exception("harbor6::Containable::erase(): not an erasable Item", "un");
}

Item::~Item() = default;

const File* Item::asFile() const {
    return nullptr;
}

File* Item::asFile() {
    return nullptr;
}

const Folder* Item::asFolder() const {
    return nullptr;
}

Folder* Item::asFolder() {
    return nullptr;
}

const Archive* Item::asArchive() const {
    return nullptr;
}

Archive* Item::asArchive() {
    return nullptr;
}

bool Item::isSameItem(const Item* other) const {
    if (other == this)
        return true;
    if (asArchive() || other->asArchive())
        return false;
    if (archive() != other->archive())
        return false;
    if (archive())
        return const_cast<Item*>(this)->position() == const_cast<Item*>(other)->position();
    fs::Spec mine;
    fs::Spec theirs;
    return getStructure(key::fsSpec, mine) && other->getStructure(key::fsSpec, theirs) && mine == theirs;
}

const Archive* Item::archive() const {
    return const_cast<Item*>(this)->archive();
}

Archive* Item::archive() {
    return nullptr;
}

HarborShell& Item::shell() const {
    return *format().shell;
}

void Item::retarget(Folder& /*parent*/, const std::string& /*name*/) {
    throw un::implemented("harbor6::Item::retarget");
}

void Item::retarget(const std::string& name) {
    if ((!isCreated() || adopting) && setString(key::name, name))
        return;
    throw un::implemented("harbor6::Item::retarget");
}

void Item::reservedHook() {}

void Item::commitItem() {}

bool Item::reservedTestA(std::uint64_t /*x*/) {
    return false;
}

bool Item::reservedTestB(std::uint64_t /*x*/) {
    return false;
}

void Item::release() {
    if (references() == 1 && eraseOnRelease) {
        try {
            if (isCreated())
                erase();
        } catch (...) {
            // The reference is returned all the same.
        }
    }
    RefCounted::release();
}

void Item::setEraseOnRelease(bool erase) {
    eraseOnRelease = erase;
}

std::uint64_t Item::position() {
    throw un::implemented("harbor6::Item::position");
}

bool Item::available(const std::string& key) const {
    if (!asFolder())
        return Attributes::available(key);
    switch (idFromName(key)) {
    case key_id::numItems:
    case key_id::pluralContent:
    case key_id::compressedSize:
    case key_id::uncompressedSize:
    case key_id::totalItems:
        return false;
    case key_id::containsLocked:
        return available(key::locked) && boolean(key::locked);
    case key_id::containsEncrypted:
        return available(key::encrypted) && boolean(key::encrypted);
    default:
        return Attributes::available(key);
    }
}

bool Item::modifiable(const std::string& key) {
    switch (idFromName(key)) {
    case key_id::numItems:
    case key_id::pluralContent:
    case key_id::containsLocked:
    case key_id::containsEncrypted:
    case key_id::totalItems:
    case key_id::compressedSize:
    case key_id::uncompressedSize:
    case key_id::fileSystemItem:
    case key_id::reservedItemKey:
    case key_id::unknown:
        return false;
    default:
        return Attributes::modifiable(key);
    }
}

bool Item::hasBoolean(const std::string& key) const {
    if (asFolder()) {
        const auto id = idFromName(key);
        if (id == key_id::pluralContent || id == key_id::containsLocked || id == key_id::containsEncrypted)
            return true;
    }
    return Attributes::hasBoolean(key);
}

bool Item::getBoolean(const std::string& key, bool& value) const {
    const auto id = idFromName(key);
    if (id == key_id::fileSystemItem)
        return format().getBoolean(key::isFileSystem, value);
    if (const Folder* const folder = asFolder()) {
        switch (id) {
        case key_id::pluralContent:
            return folder->hasPluralContent(value, true);
        case key_id::containsLocked:
            return folder->getContainsLocked(value, true);
        case key_id::containsEncrypted:
            return folder->getContainsEncrypted(value, true);
        default:
            break;
        }
    }
    return Attributes::getBoolean(key, value);
}

bool Item::hasInteger(const std::string& key) const {
    if (asFolder()) {
        const auto id = idFromName(key);
        if (id == key_id::numItems || id == key_id::compressedSize || id == key_id::uncompressedSize ||
            id == key_id::totalItems)
            return true;
    }
    return Attributes::hasInteger(key);
}

bool Item::getInteger(const std::string& key, std::int64_t& value) const {
    const Folder* const folder = asFolder();
    if (!folder)
        return Attributes::getInteger(key, value);
    value = 0;
    switch (idFromName(key)) {
    case key_id::numItems:
        return folder->getNumItems(value, true);
    case key_id::compressedSize:
        return folder->getCompressedSize(value, true);
    case key_id::uncompressedSize:
        return folder->getUncompressedSize(value, true);
    case key_id::totalItems:
        return folder->getTotalItems(value, true);
    default:
        return Attributes::getInteger(key, value);
    }
}

void Item::cloneAttributes(const Attributes& source, bool withName) {
    Attributes::cloneAttributes(source, withName);
    any::time modified;
    if (modifiable(key::createTime) && !source.has(key::createTime) && source.getTime(key::modTime, modified))
        setTime(key::createTime, modified);
}

bool Item::cloneStructure(const std::string& key, const Attributes& source) {
    const auto carry = [&](auto&& structure) {
        return source.getStructure(key, structure) && setStructure(key, structure);
    };
    switch (idFromName(key)) {
    case key_id::fInfo:
        return carry(io::mac::file_info());
    case key_id::fXInfo:
        return carry(io::mac::extended_file_info());
    case key_id::dInfo:
        return carry(io::mac::folder_info());
    case key_id::dXInfo:
        return carry(io::mac::extended_folder_info());
    default:
        return false;
    }
}

void Item::populateIndex() const {
    auto& keys = index();
    if (asFolder()) {
        keys[key::numItems] = key_id::numItems;
        keys[key::pluralContent] = key_id::pluralContent;
        keys[key::uncompressedSize] = key_id::uncompressedSize;
        keys[key::compressedSize] = key_id::compressedSize;
        keys[key::containsLocked] = key_id::containsLocked;
        keys[key::containsEncrypted] = key_id::containsEncrypted;
        keys[key::totalItems] = key_id::totalItems;
    }
    keys[key::fileSystemItem] = key_id::fileSystemItem;
}

} // namespace harbor6

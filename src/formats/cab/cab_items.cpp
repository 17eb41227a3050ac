#include "formats/cab/cab_items.h"

#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_constants.h"
#include "harbor6/groundwork/text.h"

namespace harbor6::cab {

namespace {

struct dos_flag {
    const char* key;
    std::uint16_t id;
    bool io::win32::attributes::*value;
};

constexpr dos_flag dos_flags[] = {
    {key::readOnly, key_id::readOnly, &io::win32::attributes::read_only},
    {key::hidden, key_id::hidden, &io::win32::attributes::hidden},
    {key::system, key_id::system, &io::win32::attributes::system},
    {key::archive, key_id::archive, &io::win32::attributes::archive},
    {key::executable, key_id::executable, &io::win32::attributes::executable},
};

/// Null if the id is none of a flag.
const dos_flag* flag_of(std::uint16_t id) {
    for (const auto& flag : dos_flags)
        if (flag.id == id)
            return &flag;
    return nullptr;
}

/// "compMethod" of the files of a cabinet folder.
std::string method_name(std::uint16_t word) {
    namespace compression = ::format::cab::compression;
    switch (word & compression::method_mask) {
    case compression::stored:
        return "stored";
    case compression::deflate:
        return "MSZIP";
    case compression::quantum:
        return "Quantum";
    case compression::lzx:
        return "LZX:" + un::write(word >> compression::window_shift & compression::window_mask, 10, 1);
    default:
        return "unknown";
    }
}

} // namespace

FileItem::FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> read,
                   std::uint16_t method)
    : record(std::move(read)), owner(archive), compression(method) {}

FileItem::~FileItem() = default;

harbor6::Archive* FileItem::owningArchive() const {
    return owner;
}

bool FileItem::hasBoolean(const std::string& key) const {
    return flag_of(idFromName(key)) || Item::hasBoolean(key);
}

bool FileItem::getBoolean(const std::string& key, bool& value) const {
    const auto* const flag = flag_of(idFromName(key));
    if (!flag)
        return Item::getBoolean(key, value);
    value = record->attributes.*flag->value;
    return true;
}

bool FileItem::hasString(const std::string& key) const {
    const auto id = idFromName(key);
    return id == key_id::pathName || id == key_id::compMethod || NamedItem::hasString(key);
}

bool FileItem::getString(const std::string& key, std::string& value) const {
    switch (idFromName(key)) {
    case key_id::pathName:
        value = record->name;
        return true;
    case key_id::compMethod:
        value = method_name(compression);
        return true;
    default:
        return NamedItem::getString(key, value);
    }
}

bool FileItem::hasInteger(const std::string& key) const {
    const auto id = idFromName(key);
    return id == key_id::uncompressedSize || id == key_id::folderIndex || id == key_id::folderOffset ||
           Item::hasInteger(key);
}

bool FileItem::getInteger(const std::string& key, std::int64_t& value) const {
    switch (idFromName(key)) {
    case key_id::uncompressedSize:
        value = static_cast<std::int64_t>(record->size);
        return true;
    case key_id::folderIndex:
        value = record->folder_index;
        return true;
    case key_id::folderOffset:
        value = static_cast<std::int64_t>(record->folder_offset);
        return true;
    default:
        return Item::getInteger(key, value);
    }
}

bool FileItem::hasStructure(const std::string& key) const {
    return idFromName(key) == key_id::win32Attributes || Item::hasStructure(key);
}

bool FileItem::getStructure(const std::string& key, un::structure& value) const {
    return idFromName(key) == key_id::win32Attributes ? un::copy_to(value, record->attributes)
                                                      : Item::getStructure(key, value);
}

void FileItem::populateIndex() const {
    const auto details = owner->options.item_details;
    if (details == Archive::Details::none)
        return NamedItem::populateIndex();
    auto& keys = index();
    if (!keys.empty())
        return;
    Item::populateIndex();
    keys[key::name] = key_id::name;
    keys[key::modTime] = key_id::modTime;
    keys[key::uncompressedSize] = key_id::uncompressedSize;
    keys[key::win32Attributes] = key_id::win32Attributes;
    for (const auto& flag : dos_flags)
        keys[flag.key] = flag.id;
    if (details == Archive::Details::attributes)
        return;
    keys[key::pathName] = key_id::pathName;
    keys[key::compMethod] = key_id::compMethod;
    keys[key::folderIndex] = key_id::folderIndex;
    keys[key::folderOffset] = key_id::folderOffset;
}

Attributes::Index* FileItem::newIndex() const {
    static Index with_attributes;
    static Index with_all;
    switch (owner->options.item_details) {
    case Archive::Details::none:
        return NamedItem::newIndex();
    case Archive::Details::attributes:
        return &with_attributes;
    case Archive::Details::all:
        break;
    }
    return &with_all;
}

std::string FileItem::itemName() const {
    return record->name_shortened ? record->name : nio::leaf(record->name, '/');
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

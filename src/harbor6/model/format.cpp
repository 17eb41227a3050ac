#include "harbor6/model/format.h"

#include "harbor6/model/archive.h"
#include "harbor6/model/file.h"

#include <algorithm>
#include <iterator>

namespace format {

classifier::classifier(std::uint32_t number, std::uint32_t id) : format_number(number), identifier(id) {}

classifier::~classifier() = default;

unsigned classifier::default_result() {
    return 0;
}

std::string_view classifier::leading_bytes() const {
    return {};
}

std::uint64_t classifier::measure(stream::input& /*archive*/) {
    return ~std::uint64_t{0};
}

bool classifier::continues_at(unsigned /*offset*/) {
    return false;
}

} // namespace format

namespace harbor6 {

namespace {

struct KeyRange {
    std::uint16_t first;
    std::uint16_t last;
};

// Ids of format keys that this index doesn't contain but a derived class's may. None of them can be set.
constexpr KeyRange reserved[] = {
    {0x4014, 0x4016}, {0x4019, 0x401B}, {0x401D, 0x401F}, {0x4021, 0x4025}, {0x4027, 0x402A},
    {0x402C, 0x4030}, {0x4038, 0x4040}, {0x4048, 0x404A}, {0x404C, 0x404E},
};

/// Which `has...` operations return true for a key whatever its value; the others ask the base.
enum Has : unsigned { base = 0, boolean = 1, integer = 2 };

struct FormatKey {
    const char* key;
    std::uint16_t id;
    unsigned has;
    bool fixed; ///< can't be set
};

constexpr FormatKey format_keys[] = {
    {key::formatName, key_id::formatName, base,
     true}, // string keys are `base`: hasString() tests the value itself
    {key::suffix, key_id::suffix, base, true},
    {key::isFile, key_id::isFile, boolean, true},
    {key::isFolder, key_id::isFolder, boolean, true},
    {key::expandsArchives, key_id::expandsArchives, boolean, true},
    {key::recoversArchives, key_id::recoversArchives, boolean, true},
    {key::createsArchives, key_id::createsArchives, boolean, true},
    {key::compressionLevel, key_id::compressionLevel, integer, false},
    {key::compressionLeast, key_id::compressionLeast, integer, true},
    {key::compressionMost, key_id::compressionMost, integer, true},
    {key::isFileSystem, key_id::isFileSystem, boolean, true},
    {key::mimeType, key_id::mimeType, base, true},
    {key::isSegmented, key_id::isSegmented, boolean, true},
    {key::compressionDefault, key_id::compressionDefault, integer, true},
    {key::fileType, key_id::fileType, integer, false},
    {key::fileCreator, key_id::fileCreator, integer, false},
    {key::providesEmptyFile, key_id::providesEmptyFile, boolean, true},
    {key::isText, key_id::isText, boolean, true},
    {key::savesResources, key_id::savesResources, base, true},
    {key::macFormat, key_id::macFormat, base, true},
    {key::longName, key_id::longName, base, true},
    {key::preserveResourceFork, key_id::preserveResourceFork, boolean | integer, false},
    {key::executable, key_id::executable, boolean, false},
    {key::fileSizeBits, key_id::fileSizeBits, base, true},
    {key::macAttributes, key_id::macAttributes, base, true},
    {key::createsIndex, key_id::createsIndex, boolean, true},
};

/// Null for an id that isn't in the table.
const FormatKey* findKey(std::uint16_t id) {
    const auto* const found = std::find_if(std::begin(format_keys), std::end(format_keys),
                                           [&](const FormatKey& each) { return each.id == id; });
    return found == std::end(format_keys) ? nullptr : found;
}

} // namespace

Format::Overflow::Overflow() : un::exception("value cannot be represented", "harbor6::Format::Overflow") {}

Format::Overflow::~Overflow() = default;

std::unique_ptr<basic::cloneable_exception> Format::Overflow::Clone() const {
    return std::make_unique<Overflow>();
}

void Format::Overflow::Raise() const {
    throw Overflow(*this);
}

Format::Format(HarborShell* host) : shell(host) {}

Format::~Format() = default;

bool Format::modifiable(const std::string& key) {
    const auto id = idFromName(key);
    for (const auto& range : reserved)
        if (id >= range.first && id <= range.last)
            return false;
    const auto* const entry = findKey(id);
    return !(entry && entry->fixed) && Attributes::modifiable(key);
}

bool Format::hasBoolean(const std::string& key) const {
    const auto* const entry = findKey(idFromName(key));
    return (entry && (entry->has & Has::boolean)) || Attributes::hasBoolean(key);
}

bool Format::getBoolean(const std::string& key, bool& value) const {
    const auto give = [&](bool flag) {
        value = flag;
        return true;
    };
    switch (idFromName(key)) {
    case key_id::isFile:
        return give(is_file);
    case key_id::isFolder:
        return give(is_folder);
    case key_id::expandsArchives:
        return give((capabilities & expands_archives) != 0);
    case key_id::recoversArchives:
        return give(recovers_archives);
    case key_id::createsArchives:
        return give((capabilities & creates_archives) != 0);
    case key_id::isFileSystem:
        return give(isFileSystem());
    case key_id::isSegmented:
        return give(is_segmented);
    case key_id::providesEmptyFile:
        return give(provides_empty_file);
    case key_id::isText:
        return give(is_text);
    case key_id::savesResources:
        return give(saves_resources);
    case key_id::macFormat:
        return give(mac_format);
    case key_id::executable:
        return give(executable);
    case key_id::macAttributes:
        return give(mac_attributes);
    case key_id::createsIndex:
        return give(false);
    default:
        return Attributes::getBoolean(key, value);
    }
}

bool Format::setBoolean(const std::string& key, bool value) {
    if (idFromName(key) != key_id::executable)
        return Attributes::setBoolean(key, value);
    executable = value;
    return true;
}

bool Format::hasString(const std::string& key) const {
    switch (idFromName(key)) {
    case key_id::formatName:
        return true;
    case key_id::suffix:
        return !suffixes.empty();
    case key_id::mimeType:
        return !mime_type.empty();
    default:
        return Attributes::hasString(key);
    }
}

bool Format::getString(const std::string& key, std::string& value) const {
    switch (idFromName(key)) {
    case key_id::formatName:
        value = format_name;
        return true;
    case key_id::suffix:
        if (suffixes.empty())
            return false;
        value = suffixes.front();
        return true;
    case key_id::mimeType:
        value = mime_type;
        return !mime_type.empty();
    case key_id::longName:
        value = long_name.empty() ? format_name : long_name;
        return true;
    default:
        return Attributes::getString(key, value);
    }
}

bool Format::hasInteger(const std::string& key) const {
    const auto* const entry = findKey(idFromName(key));
    return (entry && (entry->has & Has::integer)) || Attributes::hasInteger(key);
}

bool Format::getInteger(const std::string& key, std::int64_t& value) const {
    const auto give = [&](std::int64_t number) {
        value = number;
        return true;
    };
    switch (idFromName(key)) {
    case key_id::compressionLevel:
        return give(compression_level == default_level ? compression_default : compression_level);
    case key_id::compressionLeast:
        return give(compression_least);
    case key_id::compressionMost:
        return give(compression_most);
    case key_id::compressionDefault:
        return give(compression_default);
    case key_id::fileType:
        return give(model.file_info.type.code);
    case key_id::fileCreator:
        return give(model.file_info.creator.code);
    case key_id::preserveResourceFork:
        return give(preserve_resource_fork);
    case key_id::fileSizeBits:
        return give(file_size_bits);
    default:
        return Attributes::getInteger(key, value);
    }
}

bool Format::setInteger(const std::string& key, const std::int64_t& value) {
    switch (idFromName(key)) {
    case key_id::compressionLevel: {
        const auto level = static_cast<std::uint16_t>(value);
        if (level == default_level)
            compression_level = static_cast<std::uint16_t>(compression_default);
        else if (int{level} < compression_least)
            compression_level = static_cast<std::uint16_t>(compression_least);
        else if (int{level} > compression_most)
            compression_level = static_cast<std::uint16_t>(compression_most);
        else
            compression_level = level;
        return true;
    }
    case key_id::preserveResourceFork:
        preserve_resource_fork = static_cast<std::uint32_t>(value);
        return true;
    default:
        return Attributes::setInteger(key, value);
    }
}

void Format::populateIndex() const {
    for (const auto& entry : format_keys)
        index()[entry.key] = entry.id;
}

void Format::testActive() const {
    if (!active)
        throw un::exception("attempt to create an archive using a deactivated format", "un");
}

Archive* Format::newArchiveAtFile(File& file) {
    testActive();
    std::string name;
    if (!file.getString(key::name, name)) {
        std::string stem;
        defaultName(stem);
        archiveName(name, stem);
        file.setString(key::name, name);
    }
    file.cloneAttributes(model, false);
    return _newEmptyArchiveAtFile(file);
}

Archive* Format::newArchiveAtFolder(Folder& folder) {
    testActive();
    return _newEmptyArchiveAtItem(folder);
}

Archive* Format::newArchiveInFolder(Folder& folder, const Item* sample) {
    testActive();
    const pattern::AcquiredPtr<File> file(newFileInFolder(folder, sample));
    return _newEmptyArchiveAtFile(*file);
}

bool Format::isSameFormat(const Format& other) const {
    return &other == this;
}

std::uint64_t Format::formatQuery(std::uint64_t /*a*/, std::uint32_t /*b*/) {
    return 1;
}

void Format::defaultName(std::string& name) const {
    name = "Archive";
}

void Format::archiveName(std::string& result, const std::string& stem) const {
    result = name_prefix + stem + (suffixes.empty() ? std::string() : suffixes.front());
}

Archive* Format::_newArchiveAtItem(File* file, unsigned mode) {
    return new Archive(*this, *file, mode);
}

Archive* Format::_newEmptyArchiveAtFile(File& file) {
    return _newEmptyArchiveAtItem(file);
}

Archive* Format::_newEmptyArchiveAtItem(Item& /*item*/) {
    throw un::implemented("harbor6::Format::_newEmptyArchiveAtItem");
}

format::classifier* Format::_newClassifier() {
    return nullptr;
}

bool Format::isFileSystem() const {
    return false;
}

File* Format::newFileInFolder(Folder& folder, const Attributes* sample) {
    std::string stem;
    if (!sample || !sample->getString(key::name, stem))
        defaultName(stem);
    std::string name;
    archiveName(name, stem);
    model.name = name;
    return folder.acquireNewFileLike(model, false);
}

format::classifier* Format::recogniser() {
    if (!classifier)
        classifier.reset(_newClassifier());
    return classifier.get();
}

SuperFormat::~SuperFormat() = default;

} // namespace harbor6

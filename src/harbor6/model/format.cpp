#include "harbor6/model/format.h"

#include "harbor6/model/archive.h"
#include "harbor6/model/file.h"

namespace format {

classifier::classifier(std::uint32_t number, std::uint32_t id) : format_number(number), identifier(id) {}

classifier::~classifier() = default;

unsigned classifier::default_result() {
    return 0;
}

} // namespace format

namespace harbor6 {

namespace {

struct KeyRange {
    std::uint16_t first;
    std::uint16_t last;
};

// Ids of format keys that this index doesn't hold, but classes derived from it may: none can be set.
constexpr KeyRange fixed_elsewhere[] = {
    {0x4014, 0x4016}, {0x4019, 0x401B}, {0x401D, 0x401F}, {0x4021, 0x4025}, {0x4027, 0x402A},
    {0x402C, 0x4030}, {0x4038, 0x4040}, {0x4048, 0x404A}, {0x404C, 0x404E},
};

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
    for (const auto& range : fixed_elsewhere)
        if (id >= range.first && id <= range.last)
            return false;
    switch (id) {
    case key_id::formatName:
    case key_id::suffix:
    case key_id::isFile:
    case key_id::isFolder:
    case key_id::expandsArchives:
    case key_id::recoversArchives:
    case key_id::createsArchives:
    case key_id::compressionLeast:
    case key_id::compressionMost:
    case key_id::isFileSystem:
    case key_id::mimeType:
    case key_id::isSegmented:
    case key_id::compressionDefault:
    case key_id::providesEmptyFile:
    case key_id::isText:
    case key_id::savesResources:
    case key_id::macFormat:
    case key_id::longName:
    case key_id::fileSizeBits:
    case key_id::macAttributes:
    case key_id::createsIndex:
        return false;
    default:
        return Attributes::modifiable(key);
    }
}

bool Format::hasBoolean(const std::string& key) const {
    switch (idFromName(key)) {
    case key_id::isFile:
    case key_id::isFolder:
    case key_id::expandsArchives:
    case key_id::recoversArchives:
    case key_id::createsArchives:
    case key_id::isFileSystem:
    case key_id::isSegmented:
    case key_id::providesEmptyFile:
    case key_id::isText:
    case key_id::preserveResourceFork:
    case key_id::executable:
    case key_id::createsIndex:
        return true;
    default:
        return Attributes::hasBoolean(key);
    }
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
    switch (idFromName(key)) {
    case key_id::compressionLevel:
    case key_id::compressionLeast:
    case key_id::compressionMost:
    case key_id::compressionDefault:
    case key_id::fileType:
    case key_id::fileCreator:
    case key_id::preserveResourceFork:
        return true;
    default:
        return Attributes::hasInteger(key);
    }
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
    auto& keys = index();
    keys[key::formatName] = key_id::formatName;
    keys[key::suffix] = key_id::suffix;
    keys[key::isFile] = key_id::isFile;
    keys[key::isFolder] = key_id::isFolder;
    keys[key::expandsArchives] = key_id::expandsArchives;
    keys[key::recoversArchives] = key_id::recoversArchives;
    keys[key::createsArchives] = key_id::createsArchives;
    keys[key::compressionLevel] = key_id::compressionLevel;
    keys[key::compressionLeast] = key_id::compressionLeast;
    keys[key::compressionMost] = key_id::compressionMost;
    keys[key::isFileSystem] = key_id::isFileSystem;
    keys[key::mimeType] = key_id::mimeType;
    keys[key::isSegmented] = key_id::isSegmented;
    keys[key::compressionDefault] = key_id::compressionDefault;
    keys[key::fileType] = key_id::fileType;
    keys[key::fileCreator] = key_id::fileCreator;
    keys[key::providesEmptyFile] = key_id::providesEmptyFile;
    keys[key::isText] = key_id::isText;
    keys[key::savesResources] = key_id::savesResources;
    keys[key::macFormat] = key_id::macFormat;
    keys[key::longName] = key_id::longName;
    keys[key::preserveResourceFork] = key_id::preserveResourceFork;
    keys[key::executable] = key_id::executable;
    keys[key::fileSizeBits] = key_id::fileSizeBits;
    keys[key::macAttributes] = key_id::macAttributes;
    keys[key::createsIndex] = key_id::createsIndex;
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

std::unique_ptr<format::classifier> Format::_newClassifier() {
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
        classifier = _newClassifier();
    return classifier.get();
}

SuperFormat::~SuperFormat() = default;

} // namespace harbor6

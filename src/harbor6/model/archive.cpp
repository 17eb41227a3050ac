#include "harbor6/model/archive.h"

#include "harbor6/model/archive_walk.h"
#include "harbor6/model/file.h"
#include "harbor6/model/format.h"
#include "harbor6/model/scratch_space.h"
#include "harbor6/model/volume_source.h"
#include "harbor6/shell/fork.h"

#include <algorithm>
#include <cctype>

namespace harbor6 {

namespace {

bool endsWith(const std::string& name, const std::string& suffix) {
    const auto same = [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); };
    return !suffix.empty() && name.size() > suffix.size() &&
           std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(), same);
}

/// Null if a folder stores the archive.
Fork* mainForkOf(Item& storing) {
    File* const file = storing.asFile();
    return file ? file->getMainFork() : nullptr;
}

} // namespace

VolumeSource::~VolumeSource() = default;

Archive::ModeError::ModeError(const std::string& message) : un::exception(message, "harbor6::Archive") {}

Archive::ModeError::~ModeError() = default;

std::unique_ptr<basic::cloneable_exception> Archive::ModeError::Clone() const {
    return std::make_unique<ModeError>(*this);
}

void Archive::ModeError::Raise() const {
    throw ModeError(*this);
}

Archive::Archive(const Format& format, Item& storing_item, Mode mode)
    : described(format), storing(pattern::AcquiredPtr<Item>::sharing(storing_item)), open_mode(mode) {}

Archive::~Archive() = default;

ScratchSpace& Archive::scratchSpace() const {
    const Archive* around = this;
    while (around && !around->scratch)
        around = around->outer ? around->outer.get() : std::as_const(around->storingItem()).archive();
    return around ? *around->scratch : ScratchSpace::standard();
}

EntryFolder* Archive::walkRoot() const {
    if (open_mode == 0)
        return nullptr;
    if (!walk) {
        walk = std::make_unique<ArchiveWalk>(const_cast<Archive&>(*this), scratchSpace());
        try {
            walk->build();
        } catch (...) {
            walk.reset();
            throw;
        }
    }
    return walk->building() ? nullptr : &walk->root();
}

std::unique_ptr<pattern::Iterator<Item*>> Archive::createIterator() {
    EntryFolder* const root = walkRoot();
    return root ? root->createIterator() : Folder::createIterator();
}

std::unique_ptr<pattern::Iterator<const Item*>> Archive::createIterator() const {
    const EntryFolder* const root = walkRoot();
    return root ? root->createIterator() : Folder::createIterator();
}

void Archive::open(Mode mode) {
    if (open_mode != 0)
        throw ModeError("archive is open already");
    if ((mode & mode_create) && !described.boolean(key::createsArchives))
        throw ModeError("this format doesn't create archives");
    _open(mode);
    open_mode = mode;
}

void Archive::print(stream::output& /*out*/) {
    throw un::implemented("harbor6::Archive::print");
}

void Archive::commit() {}

void Archive::archiveHook() {}

bool Archive::verify() {
    return static_cast<bool>(storageInput(0));
}

void Archive::setArchiveFile(const Attributes* /*attributes*/) {}

data::CountedInput Archive::storageInput(std::uint64_t offset) const {
    return _storageInput(offset + shift);
}

data::random::CountedInput Archive::storageRandomInput(bool shared) const {
    return _storageRandomInput(shared);
}

data::CountedOutput Archive::storageOutput(bool expanding) {
    return _storageOutput(expanding);
}

data::random::CountedOutput Archive::storageRandomOutput(bool expanding) {
    return _storageRandomOutput(expanding);
}

void Archive::createIndex(File& /*file*/) {
    throw un::implemented("harbor6::Archive::createIndex");
}

std::uint64_t Archive::size() const {
    const auto bytes = storageInput(0);
    return bytes ? bytes->size() : 0;
}

std::uint64_t Archive::end() const {
    return size();
}

std::uint64_t Archive::waste() const {
    return 0;
}

void Archive::_open(Mode /*mode*/) {}

void Archive::_close() {}

data::CountedInput Archive::_storageInput(std::uint64_t offset) const {
    const Fork* const fork = mainForkOf(storingItem());
    auto bytes = fork ? fork->input(true) : data::CountedInput();
    if (bytes && offset != 0 && !bytes->seek(offset))
        bytes->skip(offset);
    return bytes;
}

data::random::CountedInput Archive::_storageRandomInput(bool shared) const {
    const Fork* const fork = mainForkOf(storingItem());
    return fork ? fork->randomInput(true, shared) : data::random::CountedInput();
}

data::CountedOutput Archive::_storageOutput(bool expanding) {
    Fork* const fork = mainForkOf(storingItem());
    return fork ? fork->output(expanding) : data::CountedOutput();
}

data::random::CountedOutput Archive::_storageRandomOutput(bool expanding) {
    Fork* const fork = mainForkOf(storingItem());
    return fork ? fork->randomOutput(expanding) : data::random::CountedOutput();
}

void Archive::shiftInput(std::uint64_t bytes) {
    shift += bytes;
}

void Archive::beginExtraction() {}

void Archive::endExtraction() {}

void Archive::abortExtraction() {}

void Archive::close() {
    if (open_mode == 0)
        return;
    open_mode = 0;
    walk.reset();
    _close();
}

Archive::Mode Archive::mode() const {
    return open_mode;
}

File* Archive::acquireArchiveFile() const {
    File* const file = storingItem().asFile();
    if (file)
        file->addReference();
    return file;
}

bool Archive::hasArchiveFile() const {
    return storingItem().asFile() != nullptr;
}

void Archive::sourceArchive(Archive& around) {
    outer = pattern::AcquiredPtr<Archive>::sharing(around);
}

Archive* Archive::archive() {
    return this;
}

void Archive::destroy() {
    delete this;
}

const Format& Archive::format() const {
    return described;
}

Format& Archive::format() {
    return const_cast<Format&>(described);
}

HarborShell& Archive::shell() const {
    return walk && walk->building() ? walk->shell() : Item::shell();
}

bool Archive::modifiable(const std::string& key) {
    return idFromName(key) != key_id::name && Item::modifiable(key);
}

bool Archive::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name ? storingItem().hasString(key) : Item::hasString(key);
}

bool Archive::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Item::getString(key, value);
    if (!storingItem().getString(key, value))
        return false;
    const auto suffix = described.string(key::suffix);
    if (endsWith(value, suffix))
        value.resize(value.size() - suffix.size());
    return true;
}

void Archive::populateIndex() const {
    Item::populateIndex();
    index()[key::name] = key_id::name;
}

Item& Archive::storingItem() const {
    if (!storing)
        throw un::exception("attempt to derefernce 0 ptr", "un");
    return *storing;
}

SuperArchive::SuperArchive(const Format& format, Item& storing_item, unsigned mode)
    : Archive(format, storing_item, mode) {}

SuperArchive::~SuperArchive() = default;

void SuperArchive::print(stream::output& out) {
    out.write("harbor6::Archive::print not implemented in this format\n");
}

void SuperArchive::archiveHook() {}

void SuperArchive::beginExtraction() {}

void SuperArchive::endExtraction() {}

void SuperArchive::abortExtraction() {}

void SuperArchive::destroy() {
    delete this;
}

const Folder* SuperArchive::asFolder() const {
    return this;
}

Folder* SuperArchive::asFolder() {
    return this;
}

const Archive* SuperArchive::asArchive() const {
    return this;
}

Archive* SuperArchive::asArchive() {
    return this;
}

Archive* SuperArchive::archive() {
    return this;
}

const Format& SuperArchive::format() const {
    return Archive::format();
}

Format& SuperArchive::format() {
    return Archive::format();
}

HarborShell& SuperArchive::shell() const {
    return Archive::shell();
}

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

#include "outside/shell/archive_walk.h"

#include "model/container_adaptor.h"
#include "outside/groundwork/text.h"
#include "outside/shell/archive.h"
#include "stream/random.h"

#include <algorithm>

namespace harbor6 {

using pattern::AcquiredPtr;

namespace {

/// Reads a run of a walk's bytes.
class EntryInput : public stream::random::input {
public:
    EntryInput(std::shared_ptr<const WalkState> shared, std::uint64_t offset, std::uint64_t count)
        : state(std::move(shared)), start(offset), length(count) {}

    using stream::random::input::read;

    bool seek(std::uint64_t value) override {
        if (value > length)
            return false;
        next = value;
        came_short = false;
        return true;
    }
    std::uint64_t size() const override { return length; }
    /// Bytes pushed back while the last read came short were never whole: an archive in this entry ends
    /// early.
    void unread(const char* bytes, unsigned count) override {
        if (came_short)
            throw stream::exception("cut short: the input ends at byte " + un::write(length, 10, 1),
                                    "harbor6::EntryInput");
        stream::random::input::unread(bytes, count);
    }

protected:
    unsigned _read(char* buffer, unsigned wanted) override {
        const auto there = static_cast<unsigned>(std::min<std::uint64_t>(wanted, length - next));
        const auto came = state->bytes.read(start + next, buffer, there);
        next += came;
        came_short = came < wanted;
        return came;
    }
    int _read() override {
        char byte;
        return _read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
    }
    std::uint64_t _tell() const override { return next; }

private:
    std::shared_ptr<const WalkState> state;
    std::uint64_t start;
    std::uint64_t length;
    std::uint64_t next = 0;
    bool came_short = false; ///< the last read wanted more than there was
};

/// Writes an entry's bytes behind those of the entries before it. One is open at a time.
class EntryOutput : public stream::output {
public:
    EntryOutput(std::shared_ptr<WalkState> shared, std::uint64_t& growing)
        : state(std::move(shared)), length(growing) {}

    using stream::output::write;

    void write(const char* buffer, unsigned count) override {
        state->bytes.append(buffer, count);
        length += count;
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return length; }

private:
    std::shared_ptr<WalkState> state;
    std::uint64_t& length;
};

} // namespace

bool TakeAll::sourceFile(const File& /*file*/, Folder& /*target*/, bool* /*expand*/,
                         const Format** /*format*/) {
    return true;
}

bool TakeAll::sourceArchive(Archive& /*archive*/, Folder& /*target*/) {
    return false;
}

void TakeAll::sourceArchiveDone(Archive& /*archive*/) {}

bool TakeAll::sourceFolder(const Folder& /*source*/, Folder& /*target*/) {
    return true;
}

bool TakeAll::targetFile(const File& /*source*/, File& /*newFile*/, Folder& /*target*/) {
    return true;
}

void TakeAll::targetFileReady(const File& /*source*/, File& /*newFile*/) {}

bool TakeAll::targetFolder(Folder& /*newFolder*/, Folder& /*parent*/, const Folder* /*source*/) {
    return true;
}

bool TakeAll::targetNameConflict(std::string& /*name*/, Item& /*existing*/, bool /*folders*/,
                                 const Attributes& /*model*/, AcquiredPtr<Folder>* /*target*/) {
    return true;
}

void TakeAll::itemFailed(std::uint32_t /*code*/, const Item& /*source*/, Item& /*target*/) {}

EntryFork::EntryFork(EntryFile* file) : SimpleFork(file) {}

EntryFork::~EntryFork() = default;

EntryFile& EntryFork::file() const {
    return *static_cast<EntryFile*>(owner);
}

data::CountedInput EntryFork::input(bool /*expanding*/) const {
    const auto& entry = file();
    return entry.complete ? data::CountedInput(new EntryInput(entry.state, entry.offset, entry.length))
                          : data::CountedInput();
}

data::random::CountedInput EntryFork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    const auto& entry = file();
    return entry.complete
               ? data::random::CountedInput(new EntryInput(entry.state, entry.offset, entry.length))
               : data::random::CountedInput();
}

data::CountedOutput EntryFork::output(bool /*expanding*/) {
    auto& entry = file();
    if (!entry.state->building)
        return {};
    entry.offset = entry.state->bytes.size();
    entry.length = 0;
    return data::CountedOutput(new EntryOutput(entry.state, entry.length));
}

SharedIndex EntryFile::shared_index;

EntryFile::EntryFile(std::shared_ptr<WalkState> shared)
    : state(std::move(shared)), number(++state->entries), fork(this) {}

EntryFile::~EntryFile() = default;

Archive* EntryFile::owningArchive() const {
    return state->archive;
}

void EntryFile::itemCommitted() {
    complete = true;
}

void EntryFile::destroy() {
    delete this;
}

std::uint64_t EntryFile::position() {
    return number;
}

Fork* EntryFile::getMainFork() {
    return &fork;
}

const Fork* EntryFile::getMainFork() const {
    return &fork;
}

Fork* EntryFile::getFork(unsigned id) {
    return id == 0 ? &fork : nullptr;
}

const Fork* EntryFile::getFork(unsigned id) const {
    return id == 0 ? &fork : nullptr;
}

bool EntryFile::modifiable(const std::string& key) {
    return state->building && Item::modifiable(key);
}

bool EntryFile::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || Item::hasString(key);
}

bool EntryFile::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Item::getString(key, value);
    value = name;
    return true;
}

bool EntryFile::setString(const std::string& key, const std::string& value) {
    if (!state->building || idFromName(key) != key_id::name)
        return Item::setString(key, value);
    name = value;
    return true;
}

bool EntryFile::hasTime(const std::string& key) const {
    return idFromName(key) == key_id::modTime ? timed : Item::hasTime(key);
}

bool EntryFile::getTime(const std::string& key, any::time& value) const {
    if (idFromName(key) != key_id::modTime || !timed)
        return Item::getTime(key, value);
    value = modified;
    return true;
}

bool EntryFile::setTime(const std::string& key, const any::time& value) {
    if (!state->building || idFromName(key) != key_id::modTime)
        return Item::setTime(key, value);
    modified = value;
    timed = true;
    return true;
}

bool EntryFile::hasInteger(const std::string& key) const {
    return idFromName(key) == key_id::uncompressedSize || Item::hasInteger(key);
}

bool EntryFile::getInteger(const std::string& key, std::int64_t& value) const {
    if (idFromName(key) != key_id::uncompressedSize)
        return Item::getInteger(key, value);
    value = static_cast<std::int64_t>(length);
    return true;
}

void EntryFile::populateIndex() const {
    if (!shared_index.fillNow())
        return;
    Item::populateIndex();
    index()[key::name] = key_id::name;
    index()[key::modTime] = key_id::modTime;
    index()[key::uncompressedSize] = key_id::uncompressedSize;
}

Attributes::Index* EntryFile::newIndex() const {
    return &shared_index.keys;
}

SharedIndex EntryFolder::shared_index;

EntryFolder::EntryFolder(std::shared_ptr<WalkState> shared)
    : state(std::move(shared)), number(++state->entries) {}

EntryFolder::~EntryFolder() = default;

Archive* EntryFolder::owningArchive() const {
    return state->archive;
}

void EntryFolder::destroy() {
    delete this;
}

std::uint64_t EntryFolder::position() {
    return number;
}

std::unique_ptr<pattern::Iterator<Item*>> EntryFolder::createIterator() {
    using Items = std::vector<AcquiredPtr<Item>>;
    return std::make_unique<STLContainerIterator<Items, Item*, Items::iterator>>(items);
}

std::unique_ptr<pattern::Iterator<const Item*>> EntryFolder::createIterator() const {
    using Items = const std::vector<AcquiredPtr<Item>>;
    return std::make_unique<STLContainerIterator<Items, const Item*, Items::const_iterator>>(items);
}

Item* EntryFolder::acquireItemFromName(const std::string& wanted) {
    if (!state->building)
        return Folder::acquireItemFromName(wanted);
    const auto folder = subfolders.find(wanted);
    return folder == subfolders.end() ? nullptr : AcquiredPtr<Item>::sharing(*folder->second).detach();
}

File* EntryFolder::acquireNewFileLike(const Attributes& model, bool /*uniqueName*/) {
    AcquiredPtr<File> file(_newFile());
    file->cloneAttributes(model, true);
    return file.detach();
}

Folder* EntryFolder::acquireNewFolderFromName(const std::string& wanted, bool uniqueName) {
    if (wanted.empty())
        return AcquiredPtr<Folder>::sharing(*this).detach();
    if (const AcquiredPtr<Item> known(acquireItemFromName(wanted)); known && known->asFolder())
        return AcquiredPtr<Folder>::sharing(*known->asFolder()).detach();
    AcquiredPtr<Folder> made(Folder::acquireNewFolderFromName(wanted, uniqueName));
    subfolders.emplace(wanted, static_cast<EntryFolder*>(made.get()));
    return made.detach();
}

File* EntryFolder::_newFile() {
    if (!state->building)
        return Folder::_newFile();
    AcquiredPtr<EntryFile> file(new EntryFile(state));
    items.push_back(AcquiredPtr<Item>::sharing(*file));
    return file.detach();
}

Folder* EntryFolder::_newFolder() {
    if (!state->building)
        return Folder::_newFolder();
    AcquiredPtr<EntryFolder> folder(new EntryFolder(state));
    items.push_back(AcquiredPtr<Item>::sharing(*folder));
    return folder.detach();
}

bool EntryFolder::modifiable(const std::string& key) {
    return state->building && Item::modifiable(key);
}

bool EntryFolder::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || Item::hasString(key);
}

bool EntryFolder::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Item::getString(key, value);
    value = name;
    return true;
}

bool EntryFolder::setString(const std::string& key, const std::string& value) {
    if (!state->building || idFromName(key) != key_id::name)
        return Item::setString(key, value);
    name = value;
    return true;
}

void EntryFolder::populateIndex() const {
    if (!shared_index.fillNow())
        return;
    Item::populateIndex();
    index()[key::name] = key_id::name;
}

Attributes::Index* EntryFolder::newIndex() const {
    return &shared_index.keys;
}

ArchiveWalk::ArchiveWalk(Archive& walked)
    : archive(walked), own_shell(walked.shell().getClassifier(), client),
      state(std::make_shared<WalkState>(WalkState{&walked, true, 0, {}})), tree(new EntryFolder(state)) {}

ArchiveWalk::~ArchiveWalk() = default;

void ArchiveWalk::build() {
    archive.addContentTo(*tree, nullptr);
    state->building = false;
}

EntryFolder& ArchiveWalk::root() const {
    return *tree;
}

HarborShell* ArchiveWalk::shell() {
    return state->building ? &own_shell : nullptr;
}

} // namespace harbor6

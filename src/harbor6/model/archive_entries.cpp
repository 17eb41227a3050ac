#include "harbor6/model/archive_entries.h"

#include "harbor6/groundwork/platform.h"
#include "harbor6/model/container.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/random.h"

#include <algorithm>
#include <iterator>
#include <type_traits>

namespace harbor6 {

namespace {

/// Reads an entry's bytes.
class EntryInput : public stream::random::input {
public:
    EntryInput(std::shared_ptr<const WalkState> shared, EntryBytes bytes)
        : state(std::move(shared)), stored(std::move(bytes)) {}

    using stream::random::input::read;

    bool seek(std::uint64_t value) override {
        if (value > size())
            return false;
        next = value;
        came_short = false;
        return true;
    }
    std::uint64_t size() const override { return stored.length(); }
    /// Pushing back after a read that returned too few bytes means that a record is incomplete: an
    /// archive in this entry is cut short.
    void unread(const char* bytes, unsigned count) override {
        if (came_short)
            throw stream::cut_short(size(), "harbor6::EntryInput");
        stream::random::input::unread(bytes, count);
    }

protected:
    unsigned _read(char* buffer, unsigned wanted) override {
        const auto count = stored.read(state->bytes, next, buffer, wanted);
        next += count;
        came_short = count < wanted;
        return count;
    }
    int _read() override {
        char byte;
        return _read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
    }
    std::uint64_t _tell() const override { return next; }

private:
    std::shared_ptr<const WalkState> state;
    EntryBytes stored;
    std::uint64_t next = 0;
    bool came_short = false; ///< the last read wanted more than there was
};

/// Appends an entry's bytes to those of the walk.
class EntryOutput : public stream::output, public stream::segment_listener {
public:
    EntryOutput(std::shared_ptr<WalkState> shared, EntryBytes& growing, std::uint64_t& stated)
        : state(std::move(shared)), stored(growing), expected(stated) {}

    using stream::output::write;

    void write(const char* buffer, unsigned count) override {
        const auto place = state->bytes.size();
        state->bytes.append(buffer, count);
        stored.append(place, count);
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return stored.length(); }
    void segment_begins(std::uint64_t size) override { expected = size; }
    void segment_failed() override { expected = EntryFork::damaged; }

private:
    std::shared_ptr<WalkState> state;
    EntryBytes& stored;
    std::uint64_t& expected;
};

// Ids of keys that only the format knows, in the order of their first use in a walk.
constexpr std::uint16_t first_free_id = 0x2000;
constexpr std::uint16_t last_free_id = 0x2FFF;

constexpr std::uint64_t stack_reserve = 24u << 10; ///< for what happens in the deepest folder

/// Raises `failure` when it comes to the end, each time.
template<class Base>
class FailingIterator : public Base {
public:
    template<class Items>
    FailingIterator(Items& items, std::exception_ptr ending) : Base(items), failure(std::move(ending)) {}

    void first() override {
        Base::first();
        tellAtEnd();
    }
    void next() override {
        if (this->isDone())
            return;
        Base::next();
        tellAtEnd();
    }

private:
    void tellAtEnd() const {
        if (this->isDone())
            std::rethrow_exception(failure);
    }

    const std::exception_ptr failure;
};

/// Calls `use` with each class of structure that a value can have, until it returns true.
template<class Use>
bool anyStructure(Use use) {
    return use(io::mac::file_info()) || use(io::mac::extended_file_info()) || use(io::mac::folder_info()) ||
           use(io::mac::extended_folder_info());
}

} // namespace

WalkEntry::WalkEntry(std::shared_ptr<WalkState> shared)
    : state(std::move(shared)), number(++state->entries) {}

WalkEntry::~WalkEntry() = default;

/// The value of that type, null if there is none.
template<class T>
const T* WalkEntry::find(const std::string& key) const {
    const auto id = idFromName(key);
    if constexpr (std::is_same_v<T, std::string>)
        if (id == key_id::name)
            return &name;
    if constexpr (std::is_same_v<T, any::time>)
        if (id == key_id::modTime)
            return (known & time_known) != 0 ? &modified : nullptr;
    if (others)
        for (const auto& [each, value] : *others)
            if (const auto* const held = each == id ? std::get_if<T>(&value) : nullptr)
                return held;
    return nullptr;
}

template<class T>
bool WalkEntry::get(const std::string& key, T& value) const {
    const T* const held = find<T>(key);
    if (held)
        value = *held;
    return held != nullptr;
}

/// The id of `key`, a new one if the index doesn't contain it; key_id::unknown if no more can be added.
std::uint16_t WalkEntry::idToKeep(const std::string& key) {
    const auto id = idFromName(key);
    const auto free = first_free_id + index().size();
    if (id != key_id::unknown || free > last_free_id)
        return id;
    return index()[key] = static_cast<std::uint16_t>(free);
}

template<class T>
bool WalkEntry::keep(const std::string& key, const T& value) {
    if (!modifiable(key))
        return false;
    if (T* const held = const_cast<T*>(find<T>(key))) {
        *held = value;
        return true;
    }
    const auto id = idToKeep(key);
    if constexpr (std::is_same_v<T, any::time>)
        if (id == key_id::modTime) {
            modified = value;
            known |= time_known;
            return true;
        }
    if (id == key_id::unknown)
        return false;
    if (!others)
        others = std::make_unique<decltype(others)::element_type>();
    others->emplace_back(id, value);
    return true;
}

bool WalkEntry::modifiable(const std::string& key) {
    const auto id = idFromName(key);
    return state->building &&
           (id == key_id::unknown || (id != key_id::uncompressedSize && ArchiveItem::modifiable(key)));
}

/// The bit of WalkEntry::flags for the boolean value `id`, 0 if there is none.
std::uint32_t WalkState::bitOf(std::uint16_t id) const {
    const auto found = std::find(flags.begin(), flags.end(), id);
    return found == flags.end() ? 0 : 1U << (found - flags.begin());
}

bool WalkEntry::hasBoolean(const std::string& key) const {
    return (known & state->bitOf(idFromName(key))) != 0 || ArchiveItem::hasBoolean(key);
}

bool WalkEntry::getBoolean(const std::string& key, bool& value) const {
    const auto bit = state->bitOf(idFromName(key));
    if ((known & bit) == 0)
        return ArchiveItem::getBoolean(key, value);
    value = (flags & bit) != 0;
    return true;
}

bool WalkEntry::setBoolean(const std::string& key, bool value) {
    if (!modifiable(key))
        return false;
    const auto id = idToKeep(key);
    if (id == key_id::unknown)
        return false;
    auto bit = state->bitOf(id);
    if (bit == 0 && state->flags.size() < WalkState::most_flags) {
        state->flags.push_back(id);
        bit = state->bitOf(id);
    }
    known |= bit;
    flags = value ? flags | bit : flags & ~bit;
    return bit != 0;
}

bool WalkEntry::hasString(const std::string& key) const {
    return find<std::string>(key) != nullptr;
}

bool WalkEntry::getString(const std::string& key, std::string& value) const {
    return get(key, value);
}

bool WalkEntry::setString(const std::string& key, const std::string& value) {
    return keep(key, value);
}

bool WalkEntry::hasTime(const std::string& key) const {
    return find<any::time>(key) != nullptr;
}

bool WalkEntry::getTime(const std::string& key, any::time& value) const {
    return get(key, value);
}

bool WalkEntry::setTime(const std::string& key, const any::time& value) {
    return keep(key, value);
}

bool WalkEntry::hasInteger(const std::string& key) const {
    return find<std::int64_t>(key) || ArchiveItem::hasInteger(key);
}

bool WalkEntry::getInteger(const std::string& key, std::int64_t& value) const {
    return get(key, value) || ArchiveItem::getInteger(key, value);
}

bool WalkEntry::setInteger(const std::string& key, const std::int64_t& value) {
    return keep(key, value);
}

bool WalkEntry::hasStructure(const std::string& key) const {
    return anyStructure([&](auto kind) { return find<decltype(kind)>(key) != nullptr; });
}

bool WalkEntry::getStructure(const std::string& key, un::structure& value) const {
    return anyStructure([&](auto kind) { return get(key, kind) && un::copy_to(value, kind); });
}

bool WalkEntry::setStructure(const std::string& key, const un::structure& value) {
    return anyStructure([&](auto kind) {
        const auto* const given = dynamic_cast<const decltype(kind)*>(&value);
        return given && keep(key, *given);
    });
}

void WalkEntry::cloneAttributes(const Attributes& source, bool withName) {
    Attributes::cloneAttributes(source, withName);
}

void WalkEntry::populateIndex() const {
    auto& keys = index();
    if (!keys.empty())
        return;
    ArchiveItem::populateIndex();
    keys[key::name] = key_id::name;
    keys[key::modTime] = key_id::modTime;
    keys[key::uncompressedSize] = key_id::uncompressedSize;
    keys[key::fInfo] = key_id::fInfo;
    keys[key::fXInfo] = key_id::fXInfo;
    keys[key::dInfo] = key_id::dInfo;
    keys[key::dXInfo] = key_id::dXInfo;
}

Attributes::Index* WalkEntry::newIndex() const {
    return asFolder() ? &state->folder_keys : &state->file_keys;
}

void EntryBytes::append(std::uint64_t place, unsigned count) {
    if (total == 0) {
        first_place = place;
    } else {
        const auto last = later.empty() ? run{0, first_place} : later.back();
        if (last.place + (total - last.offset) != place)
            later.push_back({total, place});
    }
    total += count;
}

unsigned EntryBytes::read(const ScratchLog& log, std::uint64_t offset, char* buffer, unsigned count) const {
    unsigned done = 0;
    while (done < count && offset + done < total) {
        const auto at = offset + done;
        const auto behind =
            std::upper_bound(later.begin(), later.end(), at,
                             [](std::uint64_t value, const run& each) { return value < each.offset; });
        const auto here = behind == later.begin() ? run{0, first_place} : *std::prev(behind);
        const auto end = behind == later.end() ? total : behind->offset;
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(count - done, end - at));
        const auto came = log.read(here.place + (at - here.offset), buffer + done, wanted);
        done += came;
        if (came < wanted)
            break;
    }
    return done;
}

EntryFork::EntryFork(File* file) : SimpleFork(file) {}

EntryFork::~EntryFork() = default;

const std::shared_ptr<WalkState>& EntryFork::state() const {
    return dynamic_cast<const EntryFile&>(*owner).state;
}

data::CountedInput EntryFork::input(bool /*expanding*/) const {
    return complete ? data::CountedInput(new EntryInput(state(), bytes)) : data::CountedInput();
}

data::random::CountedInput EntryFork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    return complete ? data::random::CountedInput(new EntryInput(state(), bytes))
                    : data::random::CountedInput();
}

data::CountedOutput EntryFork::output(bool /*expanding*/) {
    if (!state()->building)
        return {};
    bytes = {};
    expected = unknown;
    return data::CountedOutput(new EntryOutput(state(), bytes, expected));
}

EntryFile::EntryFile(std::shared_ptr<WalkState> shared) : WalkEntry(std::move(shared)) {}

EntryFile::~EntryFile() = default;

void EntryFile::itemCommitted() {
    fork.complete = fork.expected == EntryFork::unknown || fork.bytes.length() == fork.expected;
}

bool EntryFile::hasInteger(const std::string& key) const {
    return idFromName(key) == key_id::uncompressedSize || WalkEntry::hasInteger(key);
}

bool EntryFile::getInteger(const std::string& key, std::int64_t& value) const {
    if (idFromName(key) != key_id::uncompressedSize)
        return WalkEntry::getInteger(key, value);
    value = static_cast<std::int64_t>(fork.bytes.length());
    return true;
}

using pattern::AcquiredPtr;

EntryFolder::EntryFolder(std::shared_ptr<WalkState> shared) : WalkEntry(std::move(shared)) {}

EntryFolder::~EntryFolder() {
    auto waiting = std::move(items);
    while (!waiting.empty()) {
        const auto item = std::move(waiting.back());
        waiting.pop_back();
        if (auto* const folder = item->references() == 1 ? dynamic_cast<EntryFolder*>(item.get()) : nullptr) {
            std::move(folder->items.begin(), folder->items.end(), std::back_inserter(waiting));
            folder->items.clear();
        }
    }
}

std::unique_ptr<pattern::Iterator<Item*>> EntryFolder::createIterator() {
    if (depth == 0 && state->failure)
        return std::make_unique<FailingIterator<StdVectorContainer::STLContainerIterator>>(items,
                                                                                           state->failure);
    return std::make_unique<StdVectorContainer::STLContainerIterator>(items);
}

std::unique_ptr<pattern::Iterator<const Item*>> EntryFolder::createIterator() const {
    if (depth == 0 && state->failure)
        return std::make_unique<FailingIterator<StdVectorContainer::STLConstContainerIterator>>(
            items, state->failure);
    return std::make_unique<StdVectorContainer::STLConstContainerIterator>(items);
}

void EntryFolder::dropIncomplete() {
    std::vector<EntryFolder*> waiting{this};
    while (!waiting.empty()) {
        auto& present = waiting.back()->items;
        waiting.pop_back();
        std::erase_if(present, [&](const AcquiredPtr<Item>& item) {
            if (auto* const folder = dynamic_cast<EntryFolder*>(item.get()))
                waiting.push_back(folder);
            const auto* const file = dynamic_cast<const EntryFile*>(item.get());
            return file && !file->isComplete();
        });
    }
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
    if (const AcquiredPtr<Item> existing(acquireItemFromName(wanted)); existing && existing->asFolder())
        return AcquiredPtr<Folder>::sharing(*existing->asFolder()).detach();
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
    const auto stack = platform::stack_left();
    if (depth == greatest_depth || depth * std::uint64_t{stack_per_level} + stack_reserve > stack)
        throw un::exception("the archive's folders lie too deep in one another", "harbor6::EntryFolder");
    AcquiredPtr<EntryFolder> folder(new EntryFolder(state));
    folder->depth = depth + 1;
    items.push_back(AcquiredPtr<Item>::sharing(*folder));
    return folder.detach();
}

} // namespace harbor6

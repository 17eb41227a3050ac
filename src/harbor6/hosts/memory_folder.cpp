#include "harbor6/hosts/memory_folder.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/owning_iterator.h"
#include "harbor6/posix/directory_tree.h"
#include "harbor6/stream/memory_input.h"
#include "harbor6/stream/multi_output.h"

namespace host {

namespace {

class memory_output : public stream::output, public stream::segment_listener {
public:
    memory_output(memory_target& shared, memory_file& file, std::shared_ptr<arrival> arriving)
        : target(shared), bytes(file.bytes), data(std::move(arriving)) {}

    using stream::output::write;

    void write(const char* buffer, unsigned length) override {
        if (length > target.most - target.size)
            throw un::exception("the files need more memory than is allowed", "host::MemoryFolder");
        bytes->append(buffer, length);
        target.size += length;
        data->set_received(bytes->size());
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return bytes->size(); }
    void segment_begins(std::uint64_t size) override { data->expect(size); }
    void segment_failed() override { data->fail({}); }

private:
    memory_target& target;
    const std::shared_ptr<std::string> bytes;
    std::shared_ptr<arrival> data;
};

bool is_below(const std::string& path, const std::string& folder) {
    return folder.empty() ||
           (path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/');
}

} // namespace

harbor6::data::CountedInput MemoryFork::input(bool /*expanding*/) const {
    const auto* const file = owner->entry();
    return file ? harbor6::data::CountedInput(new stream::memory_input(*file->bytes, file->bytes))
                : harbor6::data::CountedInput();
}

harbor6::data::CountedOutput MemoryFork::output(bool /*expanding*/) {
    auto* const file = owner->entry();
    if (!file)
        return {};
    owner->target.size -= file->bytes->size();
    file->bytes = std::make_shared<std::string>();
    owner->data = std::make_shared<arrival>();
    return harbor6::data::CountedOutput(new memory_output(owner->target, *file, owner->data));
}

MemoryFile::MemoryFile(memory_target& shared, std::string in)
    : OneForkFile(this), PlainItem(shared.plain_format), target(shared), folder(std::move(in)) {}

MemoryFile::MemoryFile(memory_target& shared, std::string in, std::string named)
    : OneForkFile(this), PlainItem(shared.plain_format), target(shared), folder(std::move(in)),
      name(std::move(named)), made(true) {}

MemoryFile::~MemoryFile() {
    if (!made && !data && !name.empty())
        target.files.erase(path());
}

std::string MemoryFile::path() const {
    return join_path(folder, name);
}

memory_file* MemoryFile::entry() const {
    const auto found = target.files.find(path());
    return found == target.files.end() ? nullptr : &found->second;
}

bool MemoryFile::isCreated() {
    return made || data;
}

harbor6::Folder* MemoryFile::acquireParent() {
    return new MemoryFolder(target, folder);
}

void MemoryFile::erase() {
    if (const auto* const file = entry())
        target.size -= file->bytes->size();
    target.files.erase(path());
}

void MemoryFile::commitItem() {
    if (auto* const file = data ? entry() : nullptr)
        file->complete = data->complete();
}

bool MemoryFile::hasInteger(const std::string& key) const {
    return key == harbor6::key::uncompressedSize || Item::hasInteger(key);
}

bool MemoryFile::getInteger(const std::string& key, std::int64_t& value) const {
    const auto* const file = key == harbor6::key::uncompressedSize ? entry() : nullptr;
    if (!file)
        return Item::getInteger(key, value);
    value = static_cast<std::int64_t>(file->bytes->size());
    return true;
}

std::string MemoryFile::itemName() const {
    return name;
}

bool MemoryFile::setItemName(const std::string& value) {
    if (!name_fault(value).empty() || target.folders.count(join_path(folder, value)) != 0 ||
        target.files.count(join_path(folder, value)) != 0)
        return false;
    auto node = target.files.extract(path());
    name = value;
    if (node) {
        node.key() = path();
        target.files.insert(std::move(node));
    } else {
        target.files.try_emplace(path());
    }
    return true;
}

std::optional<any::time> MemoryFile::itemTime() const {
    const auto* const file = entry();
    return file && file->modified ? std::optional<any::time>(*file->modified) : std::nullopt;
}

bool MemoryFile::setItemTime(const any::time& time) {
    auto* const file = entry();
    if (file)
        file->modified = fs::time(time);
    return file != nullptr;
}

MemoryFolder::MemoryFolder(memory_target& shared, std::string path)
    : PlainItem(shared.plain_format), target(shared), folder_path(std::move(path)) {}

std::string MemoryFolder::prepareFor(const std::string& name) {
    create();
    return name_fault(name);
}

bool MemoryFolder::isCreated() {
    return path().empty() || target.folders.count(path()) != 0;
}

void MemoryFolder::create() {
    for (auto each = path(); !each.empty(); each = nio::stem(each, '/'))
        target.folders.insert(each);
}

void MemoryFolder::commitItem() {
    create();
}

harbor6::Folder* MemoryFolder::acquireParent() {
    return path().empty() ? nullptr : new MemoryFolder(target, nio::stem(path(), '/'));
}

void MemoryFolder::erase() {
    std::erase_if(target.folders, [&](const auto& each) { return each == path() || is_below(each, path()); });
    std::erase_if(target.files, [&](const auto& each) {
        const bool gone = is_below(each.first, path());
        target.size -= gone ? each.second.bytes->size() : 0;
        return gone;
    });
}

std::vector<pattern::AcquiredPtr<harbor6::Item>> MemoryFolder::content() const {
    std::vector<pattern::AcquiredPtr<harbor6::Item>> items;
    for (const auto& each : target.folders)
        if (nio::stem(each, '/') == path())
            items.emplace_back(new MemoryFolder(target, each));
    for (const auto& [each, file] : target.files)
        if (nio::stem(each, '/') == path())
            items.emplace_back(new MemoryFile(target, path(), nio::leaf(each, '/')));
    return items;
}

std::unique_ptr<pattern::Iterator<harbor6::Item*>> MemoryFolder::createIterator() {
    return std::make_unique<OwningIterator<harbor6::Item*>>(content());
}

std::unique_ptr<pattern::Iterator<const harbor6::Item*>> MemoryFolder::createIterator() const {
    return std::make_unique<OwningIterator<const harbor6::Item*>>(content());
}

harbor6::Item* MemoryFolder::acquireItemFromName(const std::string& name) {
    if (target.folders.count(pathOf(name)) != 0)
        return new MemoryFolder(target, pathOf(name));
    return target.files.count(pathOf(name)) != 0 ? new MemoryFile(target, path(), name) : nullptr;
}

bool MemoryFolder::hasItemNamed(const std::string& name) const {
    return target.folders.count(pathOf(name)) != 0 || target.files.count(pathOf(name)) != 0;
}

harbor6::File* MemoryFolder::_newFile() {
    return new MemoryFile(target, path());
}

harbor6::Folder* MemoryFolder::_newFolder() {
    pattern::AcquiredPtr<MemoryFolder> folder(new MemoryFolder(target, path()));
    folder->named = false;
    return folder.detach();
}

std::string MemoryFolder::itemName() const {
    return nio::leaf(path(), '/');
}

/// Names a folder to be made, once; an empty name makes it the same folder as its parent. Renames one that
/// exists, with all that is in it.
bool MemoryFolder::setItemName(const std::string& name) {
    if (!named) {
        named = true;
        if (!name.empty() && !name_fault(name).empty())
            return false;
        if (!name.empty())
            folder_path = pathOf(name);
        return true;
    }
    const auto to = join_path(nio::stem(path(), '/'), name);
    if (path().empty() || !name_fault(name).empty() || target.folders.count(to) || target.files.count(to))
        return false;
    const auto from = std::exchange(folder_path, to);
    const auto moved = [&](const std::string& old) { return to + old.substr(from.size()); };
    const std::set<std::string> old_folders = std::exchange(target.folders, {});
    for (const auto& each : old_folders)
        target.folders.insert(each == from || is_below(each, from) ? moved(each) : each);
    std::map<std::string, memory_file> files;
    for (auto& [each, file] : target.files)
        files.emplace(is_below(each, from) ? moved(each) : each, std::move(file));
    target.files = std::move(files);
    return true;
}

} // namespace host

#include "support/memory_host.h"

#include "support/memory_streams.h"

#include <algorithm>

namespace support {

using harbor6::Item;
using pattern::AcquiredPtr;

namespace {

struct node_output : memory_output {
    node_output(memory_host& owner, node_ptr written) : host(owner), node(std::move(written)) {
        node->bytes.clear();
    }

    using stream::output::write;

    void write(const char* buffer, unsigned length) override {
        host.step("write " + node->name);
        memory_output::write(buffer, length);
        node->bytes = bytes;
    }
    void write(char byte) override { write(&byte, 1); }

    memory_host& host;
    node_ptr node;
};

/// Walks the children that there were when it was made.
template<class T>
struct node_iterator : pattern::Iterator<T> {
    node_iterator(memory_host& owner, const node_ptr& node, harbor6::Archive* archive)
        : host(owner), children(node->children), around(archive) {}

    void first() override { at = 0; }
    void next() override { ++at; }
    bool isDone() const override { return at >= children.size(); }
    T current() override { return host.item(children[at], around); }

    memory_host& host;
    std::vector<node_ptr> children;
    harbor6::Archive* around;
    std::size_t at = 0;
};

void attach(const node_ptr& child) {
    const auto parent = child->parent.lock();
    if (!std::exchange(child->created, true) && parent)
        parent->children.push_back(child);
}

/// A node below `parent` that isn't created yet.
node_ptr new_node(const node_ptr& parent, bool folder) {
    auto made = std::make_shared<memory_node>();
    made->parent = parent;
    made->folder = folder;
    return made;
}

memory_node& add(const node_ptr& parent, const std::string& name, bool folder) {
    const auto made = new_node(parent, folder);
    made->name = name;
    attach(made);
    return *made;
}

void list(const memory_node& node, const std::string& prefix, std::vector<std::string>& lines) {
    for (const auto& child : node.children) {
        lines.push_back(prefix + child->name + (child->folder ? "/" : "=" + child->bytes) + "\n");
        list(*child, prefix + child->name + "/", lines);
    }
}

} // namespace

memory_node& memory_node::file(const std::string& name_, const std::string& content) {
    auto& made = add(shared_from_this(), name_, false);
    made.bytes = content;
    return made;
}

memory_node& memory_node::dir(const std::string& name_) {
    return add(shared_from_this(), name_, true);
}

harbor6::Folder* node_item::acquireParent() {
    const auto parent = node->parent.lock();
    return parent ? new memory_folder(host, parent, around) : nullptr;
}

void node_item::create() {
    host.step("create " + node->name);
    attach(node);
}

void node_item::erase() {
    host.step("erase " + node->name);
    host.erased.push_back(node->name);
    node->created = false;
    if (const auto parent = node->parent.lock())
        std::erase(parent->children, node);
}

const harbor6::Format& node_item::format() const {
    return around ? const_cast<const harbor6::Archive*>(around)->format() : host.plain;
}

void node_item::commitItem() {
    host.step("commit " + node->name);
    ++node->commits;
    attach(node);
}

bool node_item::setString(const std::string& key, const std::string& value) {
    if (key != harbor6::key::name || host.unsettable.count(value))
        return false;
    host.step("name " + value);
    const auto parent = node->parent.lock();
    if (node->folder && !node->created && parent)
        for (const auto& sibling : parent->children)
            if (sibling->folder && sibling->name == value) {
                node = sibling; // as a file system does: the folder that is there
                return true;
            }
    node->name = value;
    return true;
}

harbor6::data::CountedInput memory_fork::input(bool /*expanding*/) const {
    const auto& item = dynamic_cast<node_item&>(*owner);
    item.host.step("read " + item.node->name);
    return harbor6::data::CountedInput(new seekable_input(item.node->bytes));
}

harbor6::data::CountedOutput memory_fork::output(bool /*expanding*/) {
    auto& item = dynamic_cast<node_item&>(*owner);
    item.host.step("open " + item.node->name);
    attach(item.node);
    return harbor6::data::CountedOutput(new node_output(item.host, item.node));
}

std::unique_ptr<pattern::Iterator<Item*>> memory_folder::createIterator() {
    return std::make_unique<node_iterator<Item*>>(host, node, around);
}

std::unique_ptr<pattern::Iterator<const Item*>> memory_folder::createIterator() const {
    return std::make_unique<node_iterator<const Item*>>(host, node, around);
}

harbor6::File* memory_folder::_newFile() {
    host.step("new file in " + node->name);
    return new memory_file(host, new_node(node, false), around);
}

harbor6::Folder* memory_folder::_newFolder() {
    host.step("new folder in " + node->name);
    return new memory_folder(host, new_node(node, true), around);
}

void test_archive::note(const std::string& step) {
    host.log += "  " + step + "\n";
    host.step(step);
}

void test_archive::setArchiveFile(const harbor6::Attributes* attributes) {
    host.log += "  receives " + (attributes ? name_of(*attributes) : "anything") + "\n";
}

std::unique_ptr<pattern::Iterator<Item*>> test_archive::createIterator() {
    return std::make_unique<node_iterator<Item*>>(host, content, this);
}

std::unique_ptr<pattern::Iterator<const Item*>> test_archive::createIterator() const {
    return std::make_unique<node_iterator<const Item*>>(host, content, const_cast<test_archive*>(this));
}

harbor6::File* test_archive::_newFile() {
    if (mode() != mode_create)
        return SuperArchive::_newFile();
    return new memory_file(host, new_node(content, false), this);
}

harbor6::Folder* test_archive::_newFolder() {
    if (mode() != mode_create)
        return SuperArchive::_newFolder();
    return new memory_folder(host, new_node(content, true), this);
}

void test_archive::_open(Mode mode) {
    host.log += "  open " + name_of(*this) + " " + std::to_string(mode) + "\n";
    host.step("open archive");
}

void test_archive::_close() {
    host.log += "  close " + name_of(*this) + "\n";
    if (content->name == "new") {
        std::string stored = "arc:";
        for (const auto& child : content->children)
            stored += child->name + "(" + child->bytes + ")";
        storageOutput(true)->write(stored);
    }
    host.step("close archive");
}

test_format::test_format(memory_host& owner) : SuperFormat(&owner.shell), host(owner) {
    format_name = "arc";
    suffixes.push_back(".arc");
    is_folder = true;
    capabilities = expands_archives | creates_archives;
}

harbor6::Archive* test_format::_newArchiveAtItem(harbor6::File* file, unsigned mode) {
    const auto& node = *dynamic_cast<node_item&>(*file).node;
    auto& content = host.archives[node.bytes.substr(4)];
    if (!content)
        content = std::make_shared<memory_node>();
    return new test_archive(host, *this, *file, mode, content);
}

/// At a folder it makes a file there.
harbor6::Archive* test_format::_newEmptyArchiveAtItem(Item& item) {
    auto content = std::make_shared<memory_node>();
    content->name = "new";
    if (!item.asFolder())
        return new test_archive(host, *this, item, 0, content);
    const AcquiredPtr<harbor6::File> file(item.asFolder()->acquireNewFileFromName("new.arc", false));
    file->commitItem();
    return new test_archive(host, *this, *file, 0, content);
}

memory_host::memory_host() {
    tree_root->name = "root";
    sources->name = "sources";
    tree_root->folder = sources->folder = tree_root->created = sources->created = true;
}

Item* memory_host::item(const node_ptr& node, harbor6::Archive* around) {
    if (node->folder)
        return new memory_folder(*this, node, around);
    return new memory_file(*this, node, around);
}

AcquiredPtr<memory_file> memory_host::source(const std::string& name, const std::string& bytes) {
    return AcquiredPtr(new memory_file(*this, sources->file(name, bytes).shared_from_this()));
}

std::string memory_host::tree() const {
    std::vector<std::string> lines;
    list(*tree_root, "", lines);
    std::sort(lines.begin(), lines.end());
    std::string text;
    for (const auto& line : lines)
        text += line;
    return text;
}

void memory_host::step(const std::string& what) {
    if (trap)
        trap(what);
}

harbor6::Archive* memory_host::registry::claim(const std::string& question, harbor6::File& file) {
    host.log += "  " + question + name_of(file) + "\n";
    host.step("classify");
    const auto& bytes = dynamic_cast<node_item&>(file).node->bytes;
    return bytes.starts_with("arc:") ? host.arc._newArchiveAtItem(&file, 0) : nullptr;
}

} // namespace support

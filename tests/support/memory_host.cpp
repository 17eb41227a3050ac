#include "support/memory_host.h"

#include "harbor6/shell/structures.h"

namespace support {

namespace {

struct node_output : memory_output {
    node_output(memory_stage& owner, node_ptr written) : host(owner), node(std::move(written)) {
        node->bytes.clear();
    }

    void write(const char* buffer, unsigned length) override {
        host.step("write " + node->name);
        node->bytes = bytes.append(buffer, length);
    }
    void write(char byte) override { write(&byte, 1); }

    memory_stage& host;
    node_ptr node;
};

} // namespace

harbor6::Item* new_item(memory_stage& host, const node_ptr& node, harbor6::Archive* around) {
    if (node->folder)
        return new memory_folder(host, node, around);
    return new memory_file(host, node, around);
}

node_ptr memory_node::child(bool is_folder, const std::string& named) {
    const auto made = std::make_shared<memory_node>(is_folder, named);
    made->parent = weak_from_this();
    return made;
}

void memory_node::create() {
    const auto above = parent.lock();
    if (!std::exchange(created, true) && above)
        above->children.push_back(shared_from_this());
}

memory_node& memory_node::file(const std::string& named, const std::string& content, bool is_folder) {
    const auto made = child(is_folder, named);
    made->create();
    made->bytes = content;
    return *made;
}

void memory_node::list(const std::string& prefix, std::multiset<std::string>& lines) const {
    for (const auto& each : children) {
        lines.insert(prefix + each->name + (each->folder ? "/" : "=" + each->bytes) + "\n");
        each->list(prefix + each->name + "/", lines);
    }
}

harbor6::Folder* node_item::acquireParent() {
    const auto parent = node->parent.lock();
    return parent ? new memory_folder(host, parent, around) : nullptr;
}

void node_item::erase() {
    host.step("erase " + node->name);
    host.erased.push_back(node->name);
    node->created = false;
    if (const auto parent = node->parent.lock())
        std::erase(parent->children, node);
}

bool node_item::setString(const std::string& key, const std::string& value) {
    if (key != harbor6::key::name || host.unsettable.count(value))
        return false;
    host.step("name " + value);
    const auto parent = node->parent.lock();
    if (node->folder && !node->created && parent)
        for (const auto& sibling : parent->children)
            if (sibling->folder && sibling->name == value)
                return node = sibling, true; // the existing folder, as in a file system
    return node->name = value, true;
}

bool node_item::getInteger(const std::string& key, std::int64_t& value) const {
    if (node->folder || key != harbor6::key::uncompressedSize)
        return Item::getInteger(key, value);
    return value = static_cast<std::int64_t>(node->bytes.size()), true;
}

bool node_item::getStructure(const std::string& key, un::structure& value) const {
    if (key != harbor6::key::fsSpec || !node->created)
        return false;
    dynamic_cast<fs::Spec&>(value).node = reinterpret_cast<std::uintptr_t>(node.get());
    return true;
}

void node_item::populateIndex() const {
    Item::populateIndex();
    index()[harbor6::key::name] = harbor6::key_id::name;
    index()[harbor6::key::modTime] = harbor6::key_id::modTime;
    index()[harbor6::key::createTime] = 4;
}

harbor6::data::CountedInput memory_fork::input(bool /*expanding*/) const {
    const auto& item = dynamic_cast<node_item&>(*owner);
    item.host.step("read " + item.node->name);
    return harbor6::data::CountedInput(new seekable_input(item.node->bytes));
}

harbor6::data::CountedOutput memory_fork::output(bool /*expanding*/) {
    const auto& item = dynamic_cast<node_item&>(*owner);
    item.host.step("open " + item.node->name);
    item.node->create();
    return harbor6::data::CountedOutput(new node_output(item.host, item.node));
}

void test_archive::_close() {
    note("close " + name_of(*this), "close archive");
    std::string stored = "arc:";
    for (const auto& each : content->children)
        stored += each->name + "(" + each->bytes + ")";
    if (making)
        storageOutput(true)->write(stored);
}

test_format::test_format(memory_stage& owner) : SuperFormat(&owner.shell), host(owner) {
    format_name = "arc";
    suffixes.push_back(".arc");
    is_folder = true;
    capabilities = expands_archives | creates_archives;
}

harbor6::Archive* test_format::_newArchiveAtItem(harbor6::File* file, unsigned mode) {
    auto& content = host.archives[dynamic_cast<node_item&>(*file).node->bytes.substr(4)];
    if (!content)
        content = std::make_shared<memory_node>();
    return new test_archive(host, *this, *file, mode, content);
}

harbor6::Archive* test_format::_newEmptyArchiveAtItem(harbor6::Item& item) {
    pattern::AcquiredPtr<harbor6::File> made;
    if (auto* const folder = item.asFolder())
        (made = folder->acquireNewFileFromName("new.arc", false))->commitItem();
    return new test_archive(host, *this, made ? *made : item, 0, std::make_shared<memory_node>(true));
}

memory_host::memory_host() {
    tree_root->created = sources->created = true;
    classifier.claim = [this](const std::string& question, harbor6::File& file) {
        log += "  " + question + name_of(file) + "\n";
        step("classify");
        const auto& bytes = dynamic_cast<node_item&>(file).node->bytes;
        return bytes.starts_with("arc:") ? arc._newArchiveAtItem(&file, 0) : nullptr;
    };
}

std::string memory_host::tree() const {
    std::multiset<std::string> lines;
    tree_root->list("", lines);
    std::string text;
    for (const auto& line : lines)
        text += line;
    return text;
}

} // namespace support

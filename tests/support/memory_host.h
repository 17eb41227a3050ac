#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/format.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"
#include "harbor6/shell/structures.h"
#include "support/memory_streams.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

// A host in memory, whose every step can be seen and made to fail.
//
//     memory_host host;
//     host.tree_root->file("a.txt", "hello");                         a file in the root
//     host.client.declined = {"targetFile a.txt"};                    the client says no to that
//     host.trap = [](auto& what) { if (what == "write b") ...throw }; a step fails
//     EXPECT_EQ(host.tree(), "a.txt=hello\n");                        what stands in the root
//     EXPECT_EQ(host.transcript(), "sourceFile a.txt -> root\n...");
//
// A file that begins with "arc:" is an archive of test_format, whose content is the folder of host.archives
// that is named by the rest.

namespace support {

/// The name of an item, for transcripts.
inline std::string name_of(const harbor6::Attributes& item) {
    return item.string(harbor6::key::name);
}

struct memory_node;
using node_ptr = std::shared_ptr<memory_node>;

/// What stands in memory. Items are handles on it, any number of them.
struct memory_node : std::enable_shared_from_this<memory_node> {
    explicit memory_node(bool is_folder = false, std::string named = {})
        : name(std::move(named)), folder(is_folder) {}

    std::string name;
    bool folder;
    bool created = false;
    std::string bytes;
    std::map<std::string, any::time> times;
    std::map<std::string, bool> flags; ///< "locked", "encrypted", "hidden", "symLink", as far as set
    unsigned commits = 0;
    std::weak_ptr<memory_node> parent;
    std::vector<node_ptr> children;

    /// A child that isn't created yet.
    node_ptr child(bool is_folder, const std::string& named = {}) {
        const auto made = std::make_shared<memory_node>(is_folder, named);
        made->parent = weak_from_this();
        return made;
    }
    void create() {
        const auto above = parent.lock();
        if (!std::exchange(created, true) && above)
            above->children.push_back(shared_from_this());
    }
    /// These two add a created child and give it.
    memory_node& file(const std::string& named, const std::string& content) {
        const auto made = child(false, named);
        made->create();
        made->bytes = content;
        return *made;
    }
    memory_node& dir(const std::string& named) {
        const auto made = child(true, named);
        made->create();
        return *made;
    }
    void list(const std::string& prefix, std::multiset<std::string>& lines) const {
        for (const auto& each : children) {
            lines.insert(prefix + each->name + (each->folder ? "/" : "=" + each->bytes) + "\n");
            each->list(prefix + each->name + "/", lines);
        }
    }
};

/// Writes down every question and answers by `declined`, `expanded` and `on`. A line of the transcript is
/// "question subject -> target: answer".
struct recording_client : harbor6::ClientInterface {
    struct question {
        std::string text; ///< as in the transcript, without the target and the answer
        harbor6::Archive* archive = nullptr;
        const harbor6::Format** format = nullptr;
        std::string* name = nullptr;
        pattern::AcquiredPtr<harbor6::Folder>* target = nullptr;
    };

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* wants_expansion,
                    const harbor6::Format** format) override {
        *wants_expansion = expanded.count(name_of(file)) != 0;
        return ask({.text = "sourceFile " + name_of(file), .format = format}, name_of(target));
    }
    bool sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) override {
        return ask({.text = "sourceArchive " + name_of(archive), .archive = &archive}, name_of(target));
    }
    void sourceArchiveDone(harbor6::Archive& archive) override {
        log += "sourceArchiveDone " + name_of(archive) + "\n";
    }
    bool sourceFolder(const harbor6::Folder& source, harbor6::Folder& target) override {
        return ask({.text = "sourceFolder " + name_of(source)}, name_of(target));
    }
    bool targetFile(const harbor6::File& source, harbor6::File& made, harbor6::Folder& target) override {
        const auto renamed = name_of(made) == name_of(source) ? "" : " as " + name_of(made);
        return ask({.text = "targetFile " + name_of(source)}, name_of(target) + renamed);
    }
    void targetFileReady(const harbor6::File& source, harbor6::File& /*newFile*/) override {
        log += "targetFileReady " + name_of(source) + "\n";
    }
    bool targetFolder(harbor6::Folder& made, harbor6::Folder& parent,
                      const harbor6::Folder* source) override {
        return ask({.text = "targetFolder " + name_of(made)},
                   name_of(parent) + (source ? " from " + name_of(*source) : ""));
    }
    bool targetNameConflict(std::string& name, harbor6::Item& /*existing*/, bool folders,
                            const harbor6::Attributes& /*model*/,
                            pattern::AcquiredPtr<harbor6::Folder>* target) override {
        return ask({.text = "conflict " + name, .name = &name, .target = target},
                   (target ? name_of(**target) : std::string("here")) + (folders ? " folders" : ""));
    }
    void itemFailed(std::uint32_t code, const harbor6::Item& source, harbor6::Item& /*target*/) override {
        log += "itemFailed " + std::to_string(code) + " " + name_of(source) + "\n";
    }

    std::set<std::string> declined;                           ///< texts of questions that get a no
    std::set<std::string> expanded;                           ///< names of files for which expansion is asked
    std::map<std::string, std::function<void(question&)>> on; ///< runs before the answer, by text
    std::string log;

private:
    bool ask(question asked, const std::string& target) {
        const auto place = log.size();
        if (const auto reaction = on.find(asked.text); reaction != on.end())
            reaction->second(asked);
        const bool yes = !declined.count(asked.text);
        log.insert(place, asked.text + " -> " + target + (yes ? "\n" : ": no\n"));
        return yes;
    }
};

/// What the items of a memory_host stand on.
struct memory_stage {
    /// Names a step, which may throw.
    void step(const std::string& what) {
        if (trap)
            trap(what);
    }

    /// Gives the question to `claim`, which knows an archive by its first bytes.
    struct registry : harbor6::Classifier {
        harbor6::Archive* acquireStreamArchive(harbor6::File& file) override {
            return claim("classify stream ", file);
        }
        harbor6::Archive* acquireFileArchive(harbor6::File& file, std::uint32_t, std::uint32_t,
                                             std::uint32_t) override {
            return claim("classify file ", file);
        }

        std::function<harbor6::Archive*(const std::string& question, harbor6::File&)> claim;
    };

    /// The format of what lies outside archives.
    struct file_system : harbor6::Format {
        using Format::Format;
        using Format::provides_empty_file;
        bool isFileSystem() const override { return true; }
    };

    std::function<void(const std::string&)> trap; ///< called with each step, as "write a.txt"
    std::set<std::string> unsettable;             ///< names that can't be set
    std::map<std::string, node_ptr> archives;
    std::vector<std::string> erased;
    recording_client client;
    std::string& log = client.log;
    registry classifier;
    harbor6::HarborShell shell{classifier, client};
    file_system plain{&shell};
};

struct node_item : virtual harbor6::Item {
    node_item(memory_stage& owner, node_ptr shown, harbor6::Archive* archive)
        : host(owner), node(std::move(shown)), around(archive) {}

    harbor6::Folder* acquireParent() override;
    bool isCreated() override { return node->created; }
    void create() override {
        host.step("create " + node->name);
        node->create();
    }
    void erase() override {
        host.step("erase " + node->name);
        host.erased.push_back(node->name);
        node->created = false;
        if (const auto parent = node->parent.lock())
            std::erase(parent->children, node);
    }
    using Item::archive;
    harbor6::Archive* archive() override { return around; }
    const harbor6::Format& format() const override {
        return around ? std::as_const(*around).format() : host.plain;
    }
    harbor6::Format& format() override { return const_cast<harbor6::Format&>(std::as_const(*this).format()); }
    void commitItem() override {
        host.step("commit " + node->name);
        ++node->commits;
        node->create();
    }
    void destroy() override { delete this; }
    std::uint64_t position() override { return reinterpret_cast<std::uintptr_t>(node.get()); }

    bool hasBoolean(const std::string& key) const override {
        return node->flags.count(key) || Item::hasBoolean(key);
    }
    bool getBoolean(const std::string& key, bool& value) const override {
        const auto flag = node->flags.find(key);
        return flag == node->flags.end() ? Item::getBoolean(key, value) : (value = flag->second, true);
    }
    bool setBoolean(const std::string& key, bool value) override { return node->flags[key] = value, true; }
    bool hasString(const std::string& key) const override {
        return key == harbor6::key::name || Item::hasString(key);
    }
    bool getString(const std::string& key, std::string& value) const override {
        return key == harbor6::key::name ? (value = node->name, true) : Item::getString(key, value);
    }
    bool setString(const std::string& key, const std::string& value) override {
        if (key != harbor6::key::name || host.unsettable.count(value))
            return false;
        host.step("name " + value);
        const auto parent = node->parent.lock();
        if (node->folder && !node->created && parent)
            for (const auto& sibling : parent->children)
                if (sibling->folder && sibling->name == value)
                    return node = sibling, true; // as a file system does: the folder that is there
        return node->name = value, true;
    }
    bool hasTime(const std::string& key) const override { return node->times.count(key) != 0; }
    bool getTime(const std::string& key, any::time& value) const override {
        return hasTime(key) && (value = node->times.at(key), true);
    }
    bool setTime(const std::string& key, const any::time& value) override {
        return node->times[key] = value, true;
    }
    bool hasInteger(const std::string& key) const override {
        return (!node->folder && key == harbor6::key::uncompressedSize) || Item::hasInteger(key);
    }
    bool getInteger(const std::string& key, std::int64_t& value) const override {
        if (node->folder || key != harbor6::key::uncompressedSize)
            return Item::getInteger(key, value);
        return value = static_cast<std::int64_t>(node->bytes.size()), true;
    }
    bool getStructure(const std::string& key, un::structure& value) const override {
        if (key != harbor6::key::fsSpec || !node->created)
            return false;
        dynamic_cast<fs::Spec&>(value).node = reinterpret_cast<std::uintptr_t>(node.get());
        return true;
    }
    void populateIndex() const override {
        Item::populateIndex();
        index()[harbor6::key::name] = harbor6::key_id::name;
        index()[harbor6::key::modTime] = harbor6::key_id::modTime;
        index()[harbor6::key::createTime] = 4;
    }

    memory_stage& host;
    node_ptr node;
    harbor6::Archive* around; ///< the archive of which it is an entry, if any
};

struct node_output : memory_output {
    node_output(memory_stage& owner, node_ptr written) : host(owner), node(std::move(written)) {
        node->bytes.clear();
    }

    using stream::output::write;

    void write(const char* buffer, unsigned length) override {
        host.step("write " + node->name);
        node->bytes = bytes.append(buffer, length);
    }
    void write(char byte) override { write(&byte, 1); }

    memory_stage& host;
    node_ptr node;
};

struct memory_fork : harbor6::SimpleFork {
    explicit memory_fork(harbor6::File* file) : SimpleFork(file) {}

    harbor6::data::CountedInput input(bool /*expanding*/) const override {
        const auto& item = dynamic_cast<node_item&>(*owner);
        item.host.step("read " + item.node->name);
        return harbor6::data::CountedInput(new seekable_input(item.node->bytes));
    }
    harbor6::data::CountedOutput output(bool /*expanding*/) override {
        const auto& item = dynamic_cast<node_item&>(*owner);
        item.host.step("open " + item.node->name);
        item.node->create();
        return harbor6::data::CountedOutput(new node_output(item.host, item.node));
    }
};

struct memory_file : node_item, harbor6::SingleForkFile {
    memory_file(memory_stage& owner, node_ptr shown, harbor6::Archive* archive = nullptr)
        : node_item(owner, std::move(shown), archive), fork(this) {}

    harbor6::Fork* getMainFork() override { return &fork; }
    const harbor6::Fork* getMainFork() const override { return &fork; }

    memory_fork fork;
};

/// An item on `node`, counted for the caller.
harbor6::Item* new_item(memory_stage& host, const node_ptr& node, harbor6::Archive* around);

/// Walks the children that there were when it was made.
template<class T>
struct node_iterator : pattern::Iterator<T> {
    node_iterator(memory_stage& owner, const node_ptr& node, harbor6::Archive* archive)
        : host(owner), children(node->children), around(archive) {}

    void first() override { at = 0; }
    void next() override { ++at; }
    bool isDone() const override { return at >= children.size(); }
    T current() override { return new_item(host, children[at], around); }

    memory_stage& host;
    std::vector<node_ptr> children;
    harbor6::Archive* around;
    std::size_t at = 0;
};

struct memory_folder : node_item, harbor6::Folder {
    memory_folder(memory_stage& owner, node_ptr shown, harbor6::Archive* archive = nullptr)
        : node_item(owner, std::move(shown), archive) {}

    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override {
        return std::make_unique<node_iterator<harbor6::Item*>>(host, node, around);
    }
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override {
        return std::make_unique<node_iterator<const harbor6::Item*>>(host, node, around);
    }
    harbor6::File* _newFile() override {
        host.step("new file in " + node->name);
        return new memory_file(host, node->child(false), around);
    }
    harbor6::Folder* _newFolder() override {
        host.step("new folder in " + node->name);
        return new memory_folder(host, node->child(true), around);
    }
};

inline harbor6::Folder* node_item::acquireParent() {
    const auto parent = node->parent.lock();
    return parent ? new memory_folder(host, parent, around) : nullptr;
}

inline harbor6::Item* new_item(memory_stage& host, const node_ptr& node, harbor6::Archive* around) {
    if (node->folder)
        return new memory_folder(host, node, around);
    return new memory_file(host, node, around);
}

/// Walks the items of a node; writes its opening, closing and extraction into the transcript, and what it is
/// told to receive. One that is being made stores "arc:name(bytes)" of each file when it is closed.
struct test_archive : harbor6::SuperArchive {
    test_archive(memory_stage& owner, const harbor6::Format& format, harbor6::Item& item, unsigned mode,
                 node_ptr walked)
        : SuperArchive(format, item, mode), host(owner), content(std::move(walked)) {}

    void setArchiveFile(const harbor6::Attributes* next) override {
        note("receives " + (next ? name_of(*next) : "anything"), "receive");
    }
    void beginExtraction() override { note("begin", "begin"); }
    void endExtraction() override { note("end", "end"); }
    void abortExtraction() override { note("abort", "abort"); }
    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override {
        return std::make_unique<node_iterator<harbor6::Item*>>(host, content, this);
    }
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override {
        return std::make_unique<node_iterator<const harbor6::Item*>>(host, content,
                                                                     const_cast<test_archive*>(this));
    }
    harbor6::File* _newFile() override { return new memory_file(host, content->child(false), this); }

protected:
    void _open(Mode mode) override {
        note("open " + name_of(*this) + " " + std::to_string(mode), "open archive");
        making = mode == mode_create;
    }
    void _close() override {
        note("close " + name_of(*this), "close archive");
        std::string stored = "arc:";
        for (const auto& each : content->children)
            stored += each->name + "(" + each->bytes + ")";
        if (making)
            storageOutput(true)->write(stored);
    }

private:
    void note(const std::string& line, const std::string& step) {
        host.log += "  " + line + "\n";
        host.step(step);
    }

    memory_stage& host;
    node_ptr content;
    bool making = false;
};

struct test_format : harbor6::SuperFormat {
    explicit test_format(memory_stage& owner) : SuperFormat(&owner.shell), host(owner) {
        format_name = "arc";
        suffixes.push_back(".arc");
        is_folder = true;
        capabilities = expands_archives | creates_archives;
    }
    using Format::is_file, Format::provides_empty_file;

    harbor6::Archive* _newArchiveAtItem(harbor6::File* file, unsigned mode) override {
        auto& content = host.archives[dynamic_cast<node_item&>(*file).node->bytes.substr(4)];
        if (!content)
            content = std::make_shared<memory_node>();
        return new test_archive(host, *this, *file, mode, content);
    }
    /// In a folder it makes a file for the archive.
    harbor6::Archive* _newEmptyArchiveAtItem(harbor6::Item& item) override {
        pattern::AcquiredPtr<harbor6::File> made;
        if (auto* const folder = item.asFolder())
            (made = folder->acquireNewFileFromName("new.arc", false))->commitItem();
        return new test_archive(host, *this, made ? *made : item, 0, std::make_shared<memory_node>(true));
    }

    memory_stage& host;
};

struct memory_host : memory_stage {
    memory_host() {
        tree_root->created = sources->created = true;
        classifier.claim = [this](const std::string& question, harbor6::File& file) {
            log += "  " + question + name_of(file) + "\n";
            step("classify");
            const auto& bytes = dynamic_cast<node_item&>(file).node->bytes;
            return bytes.starts_with("arc:") ? arc._newArchiveAtItem(&file, 0) : nullptr;
        };
    }

    pattern::AcquiredPtr<memory_folder> folder(memory_node& node) {
        return pattern::AcquiredPtr(new memory_folder(*this, node.shared_from_this()));
    }
    pattern::AcquiredPtr<memory_folder> root() { return folder(*tree_root); }
    pattern::AcquiredPtr<harbor6::Item> item(const node_ptr& node, harbor6::Archive* around = nullptr) {
        return pattern::AcquiredPtr(new_item(*this, node, around));
    }
    /// Makes a file in the source folder, beside the root, and gives an item on it.
    pattern::AcquiredPtr<memory_file> source(const std::string& name, const std::string& bytes) {
        return pattern::AcquiredPtr(new memory_file(*this, sources->file(name, bytes).shared_from_this()));
    }
    /// An unopened archive of `arc` on `file`, whose content is host.archives' one of that name.
    pattern::AcquiredPtr<harbor6::Archive> archive(harbor6::File& file, unsigned mode = 0) {
        return pattern::AcquiredPtr(arc._newArchiveAtItem(&file, mode));
    }

    /// Everything below the root, sorted: "a.txt=bytes", "dir/", "dir/b=", a line each.
    std::string tree() const {
        std::multiset<std::string> lines;
        tree_root->list("", lines);
        std::string text;
        for (const auto& line : lines)
            text += line;
        return text;
    }
    /// What was written down since the last call.
    std::string transcript() { return std::exchange(log, {}); }

    test_format arc{*this};
    node_ptr tree_root = std::make_shared<memory_node>(true, "root");
    node_ptr sources = std::make_shared<memory_node>(true, "sources");
};

/// Throws a `Failure` the first time that the step is taken.
template<class Failure, class... Arguments>
std::function<void(const std::string&)> fail_once_at(std::string step, Arguments... arguments) {
    return [=, armed = true](const std::string& taken) mutable {
        if (taken == step && std::exchange(armed, false))
            throw Failure(arguments...);
    };
}

} // namespace support

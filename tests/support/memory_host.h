#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/format.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/shell/harbor_shell.h"
#include "support/memory_streams.h"
#include "support/recording_client.h"

#include <memory>
#include <utility>
#include <vector>

// A host in memory, which records each step and can make it fail.
//
//     memory_host host;
//     host.tree_root->file("a.txt", "hello");                         a file in the root
//     host.client.declined = {"targetFile a.txt"};                    the client answers this with no
//     host.trap = [](auto& what) { if (what == "write b") ...throw }; a step fails
//     EXPECT_EQ(host.tree(), "a.txt=hello\n");                        what the root contains
//     EXPECT_EQ(host.transcript(), "sourceFile a.txt -> root\n...");
//
// A file that begins with "arc:" is an archive of test_format. Its content is the folder in host.archives
// whose name is the rest of the file.

namespace support {

struct memory_node;
using node_ptr = std::shared_ptr<memory_node>;

/// A file or folder in memory. Items are handles on it, any number of them.
struct memory_node : std::enable_shared_from_this<memory_node> {
    explicit memory_node(bool is_folder = false, std::string named = {})
        : name(std::move(named)), folder(is_folder) {}

    std::string name;
    bool folder;
    bool created = false;
    std::string bytes;
    std::map<std::string, any::time> times;
    /// Those that have a value: "locked", "encrypted", "hidden", "symLink".
    std::map<std::string, bool> flags;
    unsigned commits = 0;
    std::weak_ptr<memory_node> parent;
    std::vector<node_ptr> children;

    /// A child that isn't created yet.
    node_ptr child(bool is_folder, const std::string& named = {});
    void create();
    /// Adds a created child and returns it; dir() adds a folder.
    memory_node& file(const std::string& named, const std::string& content, bool is_folder = false);
    memory_node& dir(const std::string& named) { return file(named, "", true); }
    /// Adds a line for everything below, as memory_host::tree does.
    void list(const std::string& prefix, std::multiset<std::string>& lines) const;
};

/// The parts of a memory_host that its items use.
struct memory_stage {
    /// Reports a step to `trap`, which may throw.
    void step(const std::string& what) {
        if (trap)
            trap(what);
    }

    /// Passes each question to `claim`, which recognises an archive by its first bytes.
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

    /// The format of items outside archives.
    struct file_system : harbor6::Format {
        using Format::Format;
        using Format::provides_empty_file;
        bool isFileSystem() const override { return true; }
    };

    std::function<void(const std::string&)> trap; ///< called with each step, such as "write a.txt"
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
    using Key = const std::string&;

    node_item(memory_stage& owner, node_ptr shown, harbor6::Archive* archive)
        : host(owner), node(std::move(shown)), around(archive) {}

    using Item::archive;

    harbor6::Folder* acquireParent() override;
    bool isCreated() override { return node->created; }
    void create() override { host.step("create " + node->name), node->create(); }
    void erase() override;
    harbor6::Archive* archive() override { return around; }
    const harbor6::Format& format() const override {
        return around ? std::as_const(*around).format() : host.plain;
    }
    harbor6::Format& format() override { return const_cast<harbor6::Format&>(std::as_const(*this).format()); }
    void commitItem() override { host.step("commit " + node->name), ++node->commits, node->create(); }
    void destroy() override { delete this; }
    std::uint64_t position() override { return reinterpret_cast<std::uintptr_t>(node.get()); }

    bool hasBoolean(Key key) const override { return node->flags.count(key) || Item::hasBoolean(key); }
    bool getBoolean(Key key, bool& value) const override {
        const auto flag = node->flags.find(key);
        return flag == node->flags.end() ? Item::getBoolean(key, value) : (value = flag->second, true);
    }
    bool setBoolean(Key key, bool value) override { return node->flags[key] = value, true; }
    bool hasString(Key key) const override { return key == harbor6::key::name; }
    bool getString(Key key, std::string& value) const override {
        return hasString(key) && (value = node->name, true);
    }
    bool setString(Key key, const std::string& value) override;
    bool hasTime(Key key) const override { return node->times.count(key) != 0; }
    bool getTime(Key key, any::time& value) const override {
        return hasTime(key) && (value = node->times.at(key), true);
    }
    bool setTime(Key key, const any::time& value) override { return node->times[key] = value, true; }
    bool hasInteger(Key key) const override {
        return (!node->folder && key == harbor6::key::uncompressedSize) || Item::hasInteger(key);
    }
    bool getInteger(Key key, std::int64_t& value) const override;
    bool getStructure(Key key, un::structure& value) const override;
    void populateIndex() const override;

    memory_stage& host;
    node_ptr node;
    harbor6::Archive* around; ///< the archive that contains the item, if any
};

struct memory_fork : harbor6::SimpleFork {
    using SimpleFork::SimpleFork;

    harbor6::data::CountedInput input(bool expanding) const override;
    harbor6::data::CountedOutput output(bool expanding) override;
};

struct memory_file : node_item, harbor6::OneForkFile<memory_fork> {
    memory_file(memory_stage& owner, node_ptr shown, harbor6::Archive* archive = nullptr)
        : node_item(owner, std::move(shown), archive) {}
};

harbor6::Item* new_item(memory_stage& host, const node_ptr& node, harbor6::Archive* around);

/// Makes items for the children that the node had when the iterator was made.
template<class T>
struct node_iterator : pattern::Iterator<T> {
    node_iterator(memory_stage& owner, const node_ptr& node, const harbor6::Archive* archive)
        : host(owner), children(node->children), around(const_cast<harbor6::Archive*>(archive)) {}

    void first() override { at = 0; }
    void next() override { ++at; }
    bool isDone() const override { return at >= children.size(); }
    T current() override { return new_item(host, children[at], around); }

    memory_stage& host;
    std::vector<node_ptr> children;
    harbor6::Archive* around;
    std::size_t at = 0;
};

template<class T>
using node_items = std::unique_ptr<pattern::Iterator<T>>;

template<class T>
node_items<T> iterate(memory_stage& host, const node_ptr& node, const harbor6::Archive* around) {
    return std::make_unique<node_iterator<T>>(host, node, around);
}

struct memory_folder : node_item, harbor6::Folder {
    memory_folder(memory_stage& owner, node_ptr shown, harbor6::Archive* archive = nullptr)
        : node_item(owner, std::move(shown), archive) {}

    node_items<harbor6::Item*> createIterator() override {
        return iterate<harbor6::Item*>(host, node, around);
    }
    node_items<const harbor6::Item*> createIterator() const override {
        return iterate<const harbor6::Item*>(host, node, around);
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

/// An archive whose content is a node. Its log has a line for opening, closing, each step of an extraction,
/// and what it is told to receive. One opened with mode_create stores "arc:name(bytes)..." when it is closed.
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
    node_items<harbor6::Item*> createIterator() override {
        return iterate<harbor6::Item*>(host, content, this);
    }
    node_items<const harbor6::Item*> createIterator() const override {
        return iterate<const harbor6::Item*>(host, content, this);
    }
    harbor6::File* _newFile() override { return new memory_file(host, content->child(false), this); }

protected:
    void _open(Mode mode) override {
        note("open " + name_of(*this) + " " + std::to_string(mode), "open archive");
        making = mode == mode_create;
    }
    void _close() override;

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
    explicit test_format(memory_stage& owner);
    using Format::is_file, Format::provides_empty_file;

    harbor6::Archive* _newArchiveAtItem(harbor6::File* file, unsigned mode) override;
    /// In a folder it makes a file for the archive.
    harbor6::Archive* _newEmptyArchiveAtItem(harbor6::Item& item) override;

    memory_stage& host;
};

struct memory_host : memory_stage {
    memory_host();

    pattern::AcquiredPtr<memory_folder> folder(memory_node& node) {
        return pattern::AcquiredPtr(new memory_folder(*this, node.shared_from_this()));
    }
    pattern::AcquiredPtr<memory_folder> root() { return folder(*tree_root); }
    pattern::AcquiredPtr<harbor6::Item> item(const node_ptr& node, harbor6::Archive* around = nullptr) {
        return pattern::AcquiredPtr(new_item(*this, node, around));
    }
    /// Makes a file in the folder of sources, which is beside the root, and returns an item for it.
    pattern::AcquiredPtr<memory_file> source(const std::string& name, const std::string& bytes) {
        return pattern::AcquiredPtr(new memory_file(*this, sources->file(name, bytes).shared_from_this()));
    }
    /// An unopened archive of `arc` in `file`.
    pattern::AcquiredPtr<harbor6::Archive> archive(harbor6::File& file, unsigned mode = 0) {
        return pattern::AcquiredPtr(arc._newArchiveAtItem(&file, mode));
    }

    /// Everything below the root, sorted: "a.txt=bytes", "dir/", "dir/b=", a line each.
    std::string tree() const;
    /// The lines logged since the last call.
    std::string transcript() { return std::exchange(log, {}); }

    test_format arc{*this};
    node_ptr tree_root = std::make_shared<memory_node>(true, "root");
    node_ptr sources = std::make_shared<memory_node>(true, "sources");
};

/// Throws a `Failure` the first time that `step` is reported.
template<class Failure, class... Arguments>
std::function<void(const std::string&)> fail_once_at(std::string step, Arguments... arguments) {
    return [=, armed = true](const std::string& taken) mutable {
        if (taken == step && std::exchange(armed, false))
            throw Failure(arguments...);
    };
}

} // namespace support

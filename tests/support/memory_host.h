#pragma once

#include "model/folder.h"
#include "model/single_fork_file.h"
#include "model/super_archive.h"
#include "model/super_format.h"
#include "outside/shell/classifier.h"
#include "outside/shell/client_interface.h"
#include "outside/shell/file_identity.h"
#include "outside/shell/harbor_shell.h"
#include "stream/output.h"

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

class memory_host;

/// The name of an item, for transcripts.
inline std::string name_of(const harbor6::Attributes& item) {
    return item.string(harbor6::key::name);
}

/// What stands in memory. Items are handles on it, any number of them.
struct memory_node : std::enable_shared_from_this<memory_node> {
    std::string name;
    bool folder = false;
    bool created = false;
    bool link = false; ///< its "symLink"
    std::string bytes;
    std::map<std::string, any::time> times;
    std::map<std::string, bool> flags; ///< "locked", "encrypted", "hidden", as far as set
    unsigned commits = 0;
    std::weak_ptr<memory_node> parent;
    std::vector<std::shared_ptr<memory_node>> children;

    /// Adds a created child and gives it.
    memory_node& file(const std::string& name, const std::string& bytes);
    memory_node& dir(const std::string& name);
};

using node_ptr = std::shared_ptr<memory_node>;

struct node_item : virtual harbor6::Item {
    node_item(memory_host& owner, node_ptr shown, harbor6::Archive* archive)
        : host(owner), node(std::move(shown)), around(archive) {}

    harbor6::Folder* acquireParent() override;
    bool isCreated() override { return node->created; }
    void create() override;
    void erase() override;
    using Item::archive;
    harbor6::Archive* archive() override { return around; }
    const harbor6::Format& format() const override;
    harbor6::Format& format() override { return const_cast<harbor6::Format&>(std::as_const(*this).format()); }
    void commitItem() override;
    void destroy() override { delete this; }
    std::uint64_t position() override { return reinterpret_cast<std::uintptr_t>(node.get()); }

    bool hasBoolean(const std::string& key) const override {
        return node->flags.count(key) || Item::hasBoolean(key);
    }
    bool getBoolean(const std::string& key, bool& value) const override {
        if (key == harbor6::key::symLink)
            return value = node->link, true;
        const auto flag = node->flags.find(key);
        if (flag == node->flags.end())
            return Item::getBoolean(key, value);
        value = flag->second;
        return true;
    }
    bool setBoolean(const std::string& key, bool value) override { return node->flags[key] = value, true; }
    bool hasString(const std::string& key) const override {
        return key == harbor6::key::name || Item::hasString(key);
    }
    bool getString(const std::string& key, std::string& value) const override {
        if (key != harbor6::key::name)
            return Item::getString(key, value);
        value = node->name;
        return true;
    }
    bool setString(const std::string& key, const std::string& value) override;
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
        value = static_cast<std::int64_t>(node->bytes.size());
        return true;
    }
    bool getStructure(const std::string& key, un::structure& value) const override {
        auto* const place =
            key == harbor6::key::fsSpec && node->created ? dynamic_cast<fs::Spec*>(&value) : nullptr;
        if (place)
            place->node = reinterpret_cast<std::uintptr_t>(node.get());
        return place != nullptr;
    }
    void populateIndex() const override {
        Item::populateIndex();
        index()[harbor6::key::name] = harbor6::key_id::name;
        index()[harbor6::key::modTime] = harbor6::key_id::modTime;
        index()[harbor6::key::createTime] = 4;
    }

    memory_host& host;
    node_ptr node;
    harbor6::Archive* around; ///< the archive of which it is an entry, if any
};

struct memory_fork : harbor6::SimpleFork {
    explicit memory_fork(harbor6::File* file) : SimpleFork(file) {}

    harbor6::data::CountedInput input(bool expanding) const override;
    harbor6::data::CountedOutput output(bool expanding) override;
};

struct memory_file : node_item, harbor6::SingleForkFile {
    memory_file(memory_host& owner, node_ptr shown, harbor6::Archive* archive = nullptr)
        : node_item(owner, std::move(shown), archive), fork(this) {}

    harbor6::Fork* getMainFork() override { return &fork; }
    const harbor6::Fork* getMainFork() const override { return &fork; }

    memory_fork fork;
};

struct memory_folder : node_item, harbor6::Folder {
    memory_folder(memory_host& owner, node_ptr shown, harbor6::Archive* archive = nullptr)
        : node_item(owner, std::move(shown), archive) {}

    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;
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

    explicit recording_client(std::string& transcript) : log(transcript) {}

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

private:
    bool ask(question asked, const std::string& target) {
        const auto place = log.size();
        if (const auto reaction = on.find(asked.text); reaction != on.end())
            reaction->second(asked);
        const bool yes = !declined.count(asked.text);
        log.insert(place, asked.text + " -> " + target + (yes ? "\n" : ": no\n"));
        return yes;
    }

    std::string& log;
};

/// Walks the items of a node; writes its opening, closing and extraction into the transcript. Opened with
/// mode 8 it takes new items and stores "arc:" and its name in its file at close.
class test_archive : public harbor6::SuperArchive {
public:
    test_archive(memory_host& owner, const harbor6::Format& format, harbor6::Item& item, unsigned mode,
                 node_ptr walked)
        : SuperArchive(format, item, mode), host(owner), content(std::move(walked)) {}

    void setArchiveFile(const harbor6::Attributes* attributes) override;
    void beginExtraction() override { note("begin"); }
    void endExtraction() override { note("end"); }
    void abortExtraction() override { note("abort"); }
    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;

protected:
    void _open(Mode mode) override;
    void _close() override;

private:
    void note(const std::string& step);

    memory_host& host;
    node_ptr content;
};

struct test_format : harbor6::SuperFormat {
    explicit test_format(memory_host& host);

    harbor6::Archive* _newArchiveAtItem(harbor6::File* file, unsigned mode) override;
    harbor6::Archive* _newEmptyArchiveAtItem(harbor6::Item& item) override;

    using Format::is_file;
    using Format::provides_empty_file;

    memory_host& host;
};

class memory_host {
public:
    memory_host();

    pattern::AcquiredPtr<memory_folder> folder(memory_node& node) {
        return pattern::AcquiredPtr(new memory_folder(*this, node.shared_from_this()));
    }
    pattern::AcquiredPtr<memory_folder> root() { return folder(*tree_root); }
    /// An item on `node`, counted for the caller.
    harbor6::Item* item(const node_ptr& node, harbor6::Archive* around = nullptr);
    /// Makes a file in the source folder, beside the root, and gives an item on it.
    pattern::AcquiredPtr<memory_file> source(const std::string& name, const std::string& bytes);

    /// Everything below the root, sorted: "a.txt=bytes", "dir/", "dir/b=", a line each.
    std::string tree() const;
    /// What was written down since the last call.
    std::string transcript() { return std::exchange(log, {}); }
    /// Names a step, which may throw.
    void step(const std::string& what);

    std::string log;
    std::function<void(const std::string&)> trap; ///< called with each step, as "write a.txt"
    std::set<std::string> unsettable;             ///< names that can't be set
    std::map<std::string, node_ptr> archives;
    std::vector<std::string> erased;
    recording_client client{log};

private:
    /// Knows an archive by its first bytes.
    struct registry : harbor6::Classifier {
        explicit registry(memory_host& owner) : host(owner) {}

        harbor6::Archive* claim(const std::string& question, harbor6::File& file);
        harbor6::Archive* acquireStreamArchive(harbor6::File& file) override {
            return claim("classify stream ", file);
        }
        harbor6::Archive* acquireFileArchive(harbor6::File& file, std::uint32_t, std::uint32_t,
                                             std::uint32_t) override {
            return claim("classify file ", file);
        }

        memory_host& host;
    };

    /// The format of what lies outside archives.
    struct file_system : harbor6::Format {
        using Format::Format;
        bool isFileSystem() const override { return true; }
        using Format::provides_empty_file;
    };

public:
    registry classifier{*this};
    harbor6::HarborShell shell{classifier, client};
    file_system plain{&shell};
    test_format arc{*this};
    node_ptr tree_root = std::make_shared<memory_node>();
    node_ptr sources = std::make_shared<memory_node>();
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

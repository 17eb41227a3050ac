#pragma once

#include "model/archive_item.h"
#include "model/folder.h"
#include "model/single_fork_file.h"
#include "outside/shell/client_interface.h"
#include "outside/shell/harbor_shell.h"
#include "outside/shell/scratch_log.h"
#include "outside/shell/shared_index.h"

#include <map>
#include <memory>
#include <vector>

// An item tree for archives that keep none: the archive's content pass runs once into folders and files that
// live in memory, and those are the archive's entries from then on.

namespace harbor6 {

/// Wants everything, for a pass that builds a tree.
class TakeAll : public ClientInterface {
public:
    bool sourceFile(const File& file, Folder& target, bool* expand, const Format** format) override;
    bool sourceArchive(Archive& archive, Folder& target) override;
    void sourceArchiveDone(Archive& archive) override;
    bool sourceFolder(const Folder& source, Folder& target) override;
    bool targetFile(const File& source, File& newFile, Folder& target) override;
    void targetFileReady(const File& source, File& newFile) override;
    bool targetFolder(Folder& newFolder, Folder& parent, const Folder* source) override;
    bool targetNameConflict(std::string& name, Item& existing, bool folders, const Attributes& model,
                            pattern::AcquiredPtr<Folder>* target) override;
    void itemFailed(std::uint32_t code, const Item& source, Item& target) override;
};

/// What the entries of one walk share. Entries hold it, so that one that outlives the archive's close() still
/// has its bytes; the archive it must not outlive.
struct WalkState {
    Archive* archive;
    bool building = true; ///< the pass is running: entries can be made and named
    std::uint64_t entries = 0;
    ScratchLog bytes;
};

class EntryFile;

/// The fork of an entry: a run of the walk's bytes.
class EntryFork : public SimpleFork {
public:
    explicit EntryFork(EntryFile* file);
    ~EntryFork() override;

    data::CountedInput input(bool expanding) const override;
    data::random::CountedInput randomInput(bool expanding, bool shared) const override;
    data::CountedOutput output(bool expanding) override;

private:
    EntryFile& file() const;
};

/// A file of an archive. One whose bytes never came has no input.
class EntryFile : public ArchiveItem, public File {
public:
    explicit EntryFile(std::shared_ptr<WalkState> state);
    ~EntryFile() override;

    Archive* owningArchive() const override;
    void itemCommitted() override;
    void destroy() override;
    std::uint64_t position() override;
    Fork* getMainFork() override;
    const Fork* getMainFork() const override;
    Fork* getFork(unsigned id) override;
    const Fork* getFork(unsigned id) const override;

    bool modifiable(const std::string& key) override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool setString(const std::string& key, const std::string& value) override;
    bool hasTime(const std::string& key) const override;
    bool getTime(const std::string& key, any::time& value) const override;
    bool setTime(const std::string& key, const any::time& value) override;
    bool hasInteger(const std::string& key) const override;
    /// "uncompressedSize" too.
    bool getInteger(const std::string& key, std::int64_t& value) const override;

protected:
    void populateIndex() const override;
    Index* newIndex() const override;

private:
    friend class EntryFork;

    static SharedIndex shared_index;

    std::shared_ptr<WalkState> state;
    std::string name;
    any::time modified;
    bool timed = false;
    bool complete = false;
    std::uint64_t number;
    std::uint64_t offset = 0; ///< of the first byte in the walk's bytes
    std::uint64_t length = 0;
    EntryFork fork;
};

/// A folder of an archive, or the root of its tree.
class EntryFolder : public ArchiveItem, public Folder {
public:
    /// Whoever walks the tree goes down it step by step; a few bytes of an archive can state any number of
    /// steps.
    static constexpr unsigned greatest_depth = 512;

    explicit EntryFolder(std::shared_ptr<WalkState> state);
    ~EntryFolder() override;

    Archive* owningArchive() const override;
    void destroy() override;
    std::uint64_t position() override;

    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override;
    /// While the tree is built, finds folders alone: archives may hold two files of one name, or a file named
    /// as a folder, and every one of them is an entry.
    Item* acquireItemFromName(const std::string& name) override;
    File* acquireNewFileLike(const Attributes& model, bool uniqueName) override;
    /// The folder of that name that is there already, else a new one; this one for an empty name.
    Folder* acquireNewFolderFromName(const std::string& name, bool uniqueName) override;
    File* _newFile() override;
    Folder* _newFolder() override;

    bool modifiable(const std::string& key) override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool setString(const std::string& key, const std::string& value) override;

protected:
    void populateIndex() const override;
    Index* newIndex() const override;

private:
    static SharedIndex shared_index;

    std::shared_ptr<WalkState> state;
    std::string name;
    std::uint64_t number;
    unsigned depth = 0; ///< folders above it
    std::vector<pattern::AcquiredPtr<Item>> items;
    std::map<std::string, EntryFolder*> subfolders;
};

/// The tree of one archive, while it is open.
class ArchiveWalk {
public:
    explicit ArchiveWalk(Archive& archive);
    ~ArchiveWalk();

    /// Runs the archive's content pass. What it raises passes through, and the walk is of no use then.
    void build();
    EntryFolder& root() const;
    /// While the pass runs, it asks this shell, which wants everything, in place of the host's; null
    /// otherwise.
    HarborShell* shell();

private:
    Archive& archive;
    TakeAll client;
    HarborShell own_shell;
    std::shared_ptr<WalkState> state;
    pattern::AcquiredPtr<EntryFolder> tree;
};

} // namespace harbor6

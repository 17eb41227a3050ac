#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/named_item.h"
#include "harbor6/model/scratch_log.h"
#include "harbor6/model/single_fork_file.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace harbor6 {

/// What the entries of one walk share. Entries hold it, so that one that outlives the archive's close() still
/// has its bytes; the archive it must not outlive.
struct WalkState {
    Archive* archive;
    bool building = true; ///< the pass is running: entries can be made and named
    std::uint64_t entries = 0;
    ScratchLog bytes;
};

/// What the classes of entries have in common, `Concrete` being one of them: a name that can be given while
/// the walk is built, and a number in the walk.
template<class Concrete>
class WalkEntry : public ArchiveItem, public NamedItem<Concrete> {
public:
    Archive* owningArchive() const override { return state->archive; }
    std::uint64_t position() override { return number; }
    bool modifiable(const std::string& key) override { return state->building && Item::modifiable(key); }

protected:
    explicit WalkEntry(std::shared_ptr<WalkState> shared)
        : state(std::move(shared)), number(++state->entries) {}

    std::string itemName() const override { return name; }
    bool setItemName(const std::string& given) override {
        if (state->building)
            name = given;
        return state->building;
    }

    const std::shared_ptr<WalkState> state;

private:
    std::string name;
    const std::uint64_t number;
};

/// The fork of an entry: a run of the walk's bytes. It has no input until all of them have come, and takes
/// them only while the walk is built.
class EntryFork : public SimpleFork {
public:
    EntryFork(File* file, std::shared_ptr<WalkState> state);
    ~EntryFork() override;

    data::CountedInput input(bool expanding) const override;
    data::random::CountedInput randomInput(bool expanding, bool shared) const override;
    data::CountedOutput output(bool expanding) override;

    bool complete = false; ///< all bytes have come
    std::uint64_t length = 0;

private:
    const std::shared_ptr<WalkState> state;
    std::uint64_t offset = 0; ///< of the first byte in the walk's bytes
};

/// A file of an archive. One whose bytes never came has no input.
class EntryFile : public WalkEntry<EntryFile>, public OneForkFile<EntryFork> {
public:
    explicit EntryFile(std::shared_ptr<WalkState> state);
    ~EntryFile() override;

    void itemCommitted() override;
    bool hasInteger(const std::string& key) const override;
    /// "uncompressedSize" too.
    bool getInteger(const std::string& key, std::int64_t& value) const override;

protected:
    std::optional<any::time> itemTime() const override;
    bool setItemTime(const any::time& time) override;
    void populateIndex() const override;

private:
    std::optional<any::time> modified;
};

/// A folder of an archive, or the root of its tree.
class EntryFolder : public WalkEntry<EntryFolder>, public Folder {
public:
    /// Whoever walks the tree goes down it step by step; a few bytes of an archive can state any number of
    /// steps.
    static constexpr unsigned greatest_depth = 512;

    explicit EntryFolder(std::shared_ptr<WalkState> state);
    ~EntryFolder() override;

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

private:
    unsigned depth = 0; ///< folders above it
    std::vector<pattern::AcquiredPtr<Item>> items;
    std::map<std::string, EntryFolder*> subfolders;
};

} // namespace harbor6

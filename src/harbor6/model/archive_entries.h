#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/scratch_log.h"
#include "harbor6/model/single_fork_file.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace harbor6 {

/// What the entries of one walk share. Entries hold it, so that the bytes of one that outlives the archive's
/// close() remain readable; the archive itself must outlive every entry.
struct WalkState {
    WalkState(Archive& walked, ScratchSpace& space) : archive(&walked), bytes(space) {}

    Archive* archive;
    bool building = true;            ///< the pass is running: entries can be made and changed
    std::exception_ptr failure = {}; ///< what ended the pass, or was wrong in it
    std::uint64_t entries = 0;
    ScratchLog bytes;
    static constexpr std::size_t most_flags = 31;
    std::vector<std::uint16_t> flags = {}; ///< ids of the boolean values that entries have, by their bits
    Attributes::Index file_keys = {};      ///< of all files of the walk
    Attributes::Index folder_keys = {};    ///< of all folders

    std::uint32_t bitOf(std::uint16_t id) const;
};

/// An item of the walk. While the walk is built it takes every attribute value that the format's item has,
/// except those that an item computes; afterwards nothing can be changed. A structure is kept if its class is
/// one of Value's.
class WalkEntry : public ArchiveItem {
public:
    ~WalkEntry() override;

    Archive* owningArchive() const override { return state->archive; }
    std::uint64_t position() override { return number; }
    void destroy() override { delete this; }

    bool modifiable(const std::string& key) override;
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool setBoolean(const std::string& key, bool value) override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool setString(const std::string& key, const std::string& value) override;
    bool hasTime(const std::string& key) const override;
    bool getTime(const std::string& key, any::time& value) const override;
    bool setTime(const std::string& key, const any::time& value) override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    bool setInteger(const std::string& key, const std::int64_t& value) override;
    bool hasStructure(const std::string& key) const override;
    bool getStructure(const std::string& key, un::structure& value) const override;
    bool setStructure(const std::string& key, const un::structure& value) override;
    /// Copies what `source` has and derives nothing from it.
    void cloneAttributes(const Attributes& source, bool withName) override;

protected:
    explicit WalkEntry(std::shared_ptr<WalkState> state);

    void populateIndex() const override;
    Index* newIndex() const override;

    const std::shared_ptr<WalkState> state;

private:
    using Value =
        std::variant<std::string, any::time, std::int64_t, io::mac::file_info, io::mac::extended_file_info,
                     io::mac::folder_info, io::mac::extended_folder_info>;

    template<class T>
    const T* find(const std::string& key) const;
    template<class T>
    bool get(const std::string& key, T& value) const;
    template<class T>
    bool keep(const std::string& key, const T& value);
    std::uint16_t idToKeep(const std::string& key);

    // Many thousands of entries have these and no other value, and should be small.
    const std::uint64_t number; ///< in the walk
    std::string name;
    any::time modified;
    std::unique_ptr<std::vector<std::pair<std::uint16_t, Value>>> others; ///< by id
    static constexpr std::uint32_t time_known = 1U << WalkState::most_flags;
    std::uint32_t known = 0; ///< time_known, and the bits of WalkState::flags that have a value
    std::uint32_t flags = 0; ///< those values
};

/// Where an entry's bytes are among those of the walk: in one run, or in several if entries were written in
/// turns.
class EntryBytes {
public:
    /// Adds `count` bytes, which begin at `place` of the log.
    void append(std::uint64_t place, unsigned count);
    /// Reads up to `count` bytes from `offset` of the entry on, fewer only at its end.
    unsigned read(const ScratchLog& log, std::uint64_t offset, char* buffer, unsigned count) const;
    std::uint64_t length() const { return total; }

private:
    struct run {
        std::uint64_t offset; ///< in the entry
        std::uint64_t place;  ///< in the log
    };

    std::uint64_t total = 0;
    std::uint64_t first_place = 0;
    std::vector<run> later; ///< the runs behind the first one, which has the offset 0
};

class EntryFile;

/// The fork of an entry: a part of the walk's bytes. It has an input once the file was committed with all
/// its bytes, and an output only while the walk is built.
class EntryFork : public SimpleFork {
public:
    explicit EntryFork(File* owner);
    ~EntryFork() override;

    data::CountedInput input(bool expanding) const override;
    data::random::CountedInput randomInput(bool expanding, bool shared) const override;
    data::CountedOutput output(bool expanding) override;

    bool complete = false; ///< the file was committed with all its bytes
    EntryBytes bytes;
    static constexpr std::uint64_t unknown = ~std::uint64_t{0};
    static constexpr std::uint64_t damaged = unknown - 1; ///< no length is right
    std::uint64_t expected = unknown;                     ///< the length that the archive states

private:
    const std::shared_ptr<WalkState>& state() const;
};

/// A file of an archive. If the pass didn't commit it, it has no input.
class EntryFile : public WalkEntry, public OneForkFile<EntryFork> {
public:
    explicit EntryFile(std::shared_ptr<WalkState> state);
    ~EntryFile() override;

    void itemCommitted() override;
    bool hasInteger(const std::string& key) const override;
    /// Computes "uncompressedSize" from the bytes.
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    /// It was committed with all its bytes.
    bool isComplete() const { return fork.complete; }

private:
    friend class EntryFork;
};

/// A folder of an archive, or the root of its tree.
class EntryFolder : public WalkEntry, public Folder {
public:
    /// Limit the recursion of code that walks the tree: a few bytes of an archive can describe any depth. A
    /// small stack lowers the limit, by what one level of a copy needs at most.
    static constexpr unsigned greatest_depth = 512;
    static constexpr unsigned stack_per_level = 1024;

    explicit EntryFolder(std::shared_ptr<WalkState> state);
    /// Destroys the folders in it one after another, not within each other.
    ~EntryFolder() override;

    /// At the top, the iterator raises what was wrong with the archive when it comes to the end.
    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override;
    /// Removes the files below this folder that have no input.
    void dropIncomplete();
    /// While the tree is built, finds folders only: an archive may contain two files of one name, or a file
    /// with the name of a folder, and each of them is an entry.
    Item* acquireItemFromName(const std::string& name) override;
    File* acquireNewFileLike(const Attributes& model, bool uniqueName) override;
    /// The existing folder of that name, or a new one; this folder for an empty name.
    Folder* acquireNewFolderFromName(const std::string& name, bool uniqueName) override;
    File* _newFile() override;
    /// Raises un::exception beyond greatest_depth, or if the stack is too small for that depth.
    Folder* _newFolder() override;

private:
    unsigned depth = 0; ///< number of folders above it
    ItemVector items;
    std::map<std::string, EntryFolder*> subfolders;
};

} // namespace harbor6

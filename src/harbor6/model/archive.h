#pragma once

#include "harbor6/model/folder.h"
#include "harbor6/model/item.h"
#include "harbor6/stream/counted_stream.h"

namespace harbor6 {

class ArchiveWalk;
class EntryFolder;
class ScratchSpace;
class VolumeSource;

/// An archive, which is a folder too. It is made on the item that stores it, to which it holds a reference;
/// its format must outlive it. Used by one thread at a time.
///
/// A format that has no item tree of its own gets one here: while the archive is open, the first walk, count
/// or lookup runs addContentTo once into entries that are kept until close(). What that raises passes
/// through, and the next walk tries again. A closed archive is empty.
class HARBOR6_API Archive : public virtual Folder {
public:
    /// How an archive is open, a combination of bits; 0 means closed.
    using Mode = std::uint32_t;
    static constexpr Mode mode_read = 1;   ///< its content is read
    static constexpr Mode mode_search = 4; ///< items are found by name
    static constexpr Mode mode_walk = 7;   ///< everything but creation
    static constexpr Mode mode_create = 8; ///< a new archive is written

    /// An operation that the open mode or the format doesn't allow.
    class HARBOR6_API ModeError : public un::exception {
    public:
        explicit ModeError(const std::string& message);
        ~ModeError() override;

        std::unique_ptr<basic::cloneable_exception> Clone() const override;
        void Raise() const override;
    };

    Archive(const Format& format, Item& storing_item, Mode mode);
    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override;
    ~Archive() override;

    /// Opens the archive. Raises ModeError if it is open already, or if `mode` creates and the format cannot.
    /// What _open raises passes through and leaves it closed.
    virtual void open(Mode mode);
    /// Writes a description of the archive. Raises un::implemented by default.
    virtual void print(stream::output& out);
    /// Writes what was added so far to the storage; nothing by default.
    virtual void commit();
    /// Reserved; never called.
    virtual void archiveHook();
    /// Whether there is storage to read.
    virtual bool verify();
    /// Announces the attributes of what the archive receives next, null if they are not known; nothing by
    /// default. They are valid during the call only.
    virtual void setArchiveFile(const Attributes* attributes);
    /// The archive's bytes from `offset` on; empty if no file with a readable main fork stores it. The stream
    /// supports unread and seeking back as far as the host's streams do.
    virtual data::CountedInput storageInput(std::uint64_t offset) const;
    /// The other streams of the storing file's main fork, with the arguments of the operations of Fork; empty
    /// likewise.
    virtual data::random::CountedInput storageRandomInput(bool shared) const;
    virtual data::CountedOutput storageOutput(bool expanding);
    virtual data::random::CountedOutput storageRandomOutput(bool expanding);
    /// Writes an index of the archive into `file`. Raises un::implemented by default.
    virtual void createIndex(File& file);
    /// Size of the storage in bytes: 0 if there is none, all ones if it is unknown.
    virtual std::uint64_t size() const;
    /// Offset at which the archive ends in its storage; here the same as size().
    virtual std::uint64_t end() const;
    /// Bytes of the storage that the archive doesn't use; 0 by default.
    virtual std::uint64_t waste() const;

protected:
    /// What a format does to open and close; nothing by default. After a failure of either the archive is
    /// closed.
    virtual void _open(Mode mode);
    virtual void _close();
    /// The implementation of the four stream operations. `offset` counts from the start of the storage.
    virtual data::CountedInput _storageInput(std::uint64_t offset) const;
    virtual data::random::CountedInput _storageRandomInput(bool shared) const;
    virtual data::CountedOutput _storageOutput(bool expanding);
    virtual data::random::CountedOutput _storageRandomOutput(bool expanding);
    /// Moves the start of the archive in its storage `bytes` further on.
    virtual void shiftInput(std::uint64_t bytes);

public:
    /// Called around a walk that copies items out: before the first item, then after the last one, or when an
    /// exception ends the walk. Nothing by default.
    virtual void beginExtraction();
    virtual void endExtraction();
    virtual void abortExtraction();

    /// Closes the archive and drops its item tree; nothing if it isn't open. What _close raises passes
    /// through.
    void close();
    /// The mode given to open(); 0 while the archive is closed.
    Mode mode() const;
    /// The file that stores the archive, counted for the caller; null if a folder does.
    File* acquireArchiveFile() const;
    /// Whether a file stores the archive.
    bool hasArchiveFile() const;
    /// Keeps the archive that contains this one alive as long as this one.
    void sourceArchive(Archive& outer);

    using Item::archive;
    /// Returns this archive.
    Archive* archive() override;
    void destroy() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;

    bool modifiable(const std::string& key) override;
    bool hasString(const std::string& key) const override;
    /// "name" is the storing item's name without the format's suffix.
    bool getString(const std::string& key, std::string& value) const override;

    bool keepFailedTargets = false; ///< a file copied from here stays if the copy fails

    /// The attributes of an item: name and time alone, with those that a file system has too (readOnly,
    /// hidden,
    /// ...), or all that its record holds.
    enum class Details : std::uint8_t { none, attributes, all };

    /// What a host asks for beyond a plain expansion. The host sets it before it opens the archive; the
    /// defaults give a plain expansion.
    struct Options {
        /// The archive is read as the published format has it where a plain expansion does otherwise, which
        /// opens archives that it can't; see docs/accepted.md. What is damaged is told to the client by
        /// sourceArchiveDamaged, and the pass goes on with the rest if the client says so. `volumes` is used.
        bool published_rules = false;
        /// With `published_rules`: data whose checksum is wrong is expanded all the same. Each file with such
        /// data is told to the client by itemFailed.
        bool ignore_checksums = false;
        /// With `published_rules`: the client is asked about all files, and no data is read. No file that the
        /// pass makes in its target is opened or committed.
        bool records_only = false;
        /// With `published_rules`: of files that share bytes so many are written at once; what the others
        /// need waits in `scratch` meanwhile. With 1 each file is complete before the next one begins.
        std::size_t files_at_once = 16;
        /// What items answer of their records.
        Details item_details = Details::none;
        /// Only what the wanted files need is read: those for which the client returned true and the target
        /// made a file. The pass ends when the last of them is complete, and where a format can tell, data
        /// without a wanted file is passed over undecoded. Damage in what is not read goes unnoticed.
        bool wanted_only = false;
        /// Bytes of a stored path that are kept; the rest of a longer one is read and dropped. No folders are
        /// made for such a path: the client is asked about the file in the target itself, under what was kept
        /// of the path as its name.
        std::uint64_t longest_path = ~std::uint64_t{0};
    };
    Options options;
    /// Where the item tree keeps the bytes of its entries; not owned. Null means the space of the
    /// archive around this one, or ScratchSpace::standard().
    ScratchSpace* scratch = nullptr;
    /// Where the other volumes of an archive of several files come from; not owned. Null means that there are
    /// none, and such an archive is refused.
    VolumeSource* volumes = nullptr;
    /// The space that is used, and must outlive the archive's operations.
    ScratchSpace& scratchSpace() const;

protected:
    void populateIndex() const override;
    /// The item that stores the archive. Raises un::exception if there is none.
    Item& storingItem() const;

private:
    /// The root of the item tree; null while the archive is closed or the tree is being built.
    EntryFolder* walkRoot() const;

    const Format& described;
    pattern::AcquiredPtr<Archive> outer; // outlives `storing`, which may be its entry
    pattern::AcquiredPtr<Item> storing;
    Mode open_mode;
    std::uint64_t shift = 0;
    mutable std::unique_ptr<ArchiveWalk> walk;
};

/// The base of a format's archive class: a complete archive, of which the class overrides what it supports.
class HARBOR6_API SuperArchive : public Archive {
public:
    SuperArchive(const Format& format, Item& storing_item, unsigned mode);
    ~SuperArchive() override;

    /// Writes that the format doesn't implement it.
    void print(stream::output& out) override;
    void archiveHook() override;
    void beginExtraction() override;
    void endExtraction() override;
    void abortExtraction() override;

    using Item::archive;

    void destroy() override;
    const Folder* asFolder() const override;
    Folder* asFolder() override;
    const Archive* asArchive() const override;
    Archive* asArchive() override;
    Archive* archive() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;
};

/// An entry of an archive. Its format, host and parent are those of the archive, which must outlive it.
class HARBOR6_API ArchiveItem : public virtual Item {
public:
    ~ArchiveItem() override;

    using Item::archive;

    Archive* archive() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;
    /// 0: a class whose entries are compared overrides it.
    std::uint64_t position() override;
    /// Announces the entry to the archive with setArchiveFile, then calls itemCommitted.
    void commitItem() override;
    /// The archive itself, whatever folder the entry is in.
    Folder* acquireParent() override;
    /// Whether the archive finds the entry by its name, which needs mode_search.
    bool exists() override;

    /// The archive to which the entry belongs, not counted.
    virtual Archive* owningArchive() const = 0;
    /// Called when the entry is committed; nothing by default.
    virtual void itemCommitted();
};

} // namespace harbor6

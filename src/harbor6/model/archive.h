#pragma once

#include "harbor6/model/folder.h"
#include "harbor6/model/item.h"
#include "harbor6/stream/counted_stream.h"

namespace harbor6 {

class ArchiveWalk;
class EntryFolder;

/// A folder that lies in an archive's storage, and the owner of that storage. Made unopened on the item that
/// stores it, of which it holds a reference; its format outlives it.
///
/// A format without an item tree of its own gets one here: while the archive is open, the first walk, count
/// or lookup runs addContentTo once into entries that are kept until close(). If that fails, the failure
/// leaves the walk, each time. Walks of a closed archive are empty.
class HARBOR6_API Archive : public virtual Folder {
public:
    /// How an archive is open; combined as bits. 0 is closed.
    using Mode = std::uint32_t;
    static constexpr Mode mode_read = 1;   ///< its content will be taken out
    static constexpr Mode mode_search = 4; ///< items are found by name
    static constexpr Mode mode_walk = 7;   ///< all that reading can ask for
    static constexpr Mode mode_create = 8; ///< it is being made

    /// An operation that the open mode or the format's abilities don't allow.
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

    /// Raises ModeError if the archive is open already, or `mode` asks a format that makes no archives to
    /// make one.
    virtual void open(Mode mode);
    /// Describes the archive in `out`. Raises un::implemented, where a class doesn't do better.
    virtual void print(stream::output& out);
    /// Makes what was put in so far count in the storage; nothing by default.
    virtual void commit();
    /// Keeps its place in the table; nothing calls it.
    virtual void archiveHook();
    /// Whether there is storage to read.
    virtual bool verify();
    /// Tells the archive that is being made what it receives next; null if that is nothing in particular.
    virtual void setArchiveFile(const Attributes* attributes);
    /// The archive's bytes from `offset` on; empty if there is no storage. The stream takes back what it
    /// delivered and seeks back into it as far as the host's streams do.
    virtual data::CountedInput storageInput(std::uint64_t offset) const;
    /// These three are streams of the storing file's main fork, empty where it gives none; `shared` and
    /// `expanding` go to the fork as they are.
    virtual data::random::CountedInput storageRandomInput(bool shared) const;
    virtual data::CountedOutput storageOutput(bool expanding);
    virtual data::random::CountedOutput storageRandomOutput(bool expanding);
    /// Writes an index of the archive into `file`. Raises un::implemented, where a class doesn't do better.
    virtual void createIndex(File& file);
    /// Bytes of the storage: 0 if there is none, all ones where it cannot tell.
    virtual std::uint64_t size() const;
    /// Where the archive ends in its storage, here the same as size().
    virtual std::uint64_t end() const;
    /// Bytes of the storage that nothing in the archive uses; 0 by default.
    virtual std::uint64_t waste() const;

protected:
    /// What opening and closing mean for a format; nothing by default. A failure of _open leaves the archive
    /// closed, and so does one of _close; both pass through.
    virtual void _open(Mode mode);
    virtual void _close();
    /// The streams behind those operations; this `offset` counts from where the storage begins.
    virtual data::CountedInput _storageInput(std::uint64_t offset) const;
    virtual data::random::CountedInput _storageRandomInput(bool shared) const;
    virtual data::CountedOutput _storageOutput(bool expanding);
    virtual data::random::CountedOutput _storageRandomOutput(bool expanding);
    /// Lets the archive begin `bytes` further on in its storage.
    virtual void shiftInput(std::uint64_t bytes);

public:
    /// Bracket a walk that copies items out: before the first, after the last, or when an exception ends it.
    virtual void beginExtraction();
    virtual void endExtraction();
    virtual void abortExtraction();

    /// Ends what open() began, the item tree included; nothing if the archive isn't open.
    void close();
    /// 0 while the archive is closed.
    Mode mode() const;
    /// The file that stores the archive, with a reference for the caller; null if a folder does.
    File* acquireArchiveFile() const;
    /// Whether a file stores the archive.
    bool hasArchiveFile() const;
    /// Links the archive around this one, and keeps it alive.
    void sourceArchive(Archive& outer);

    void destroy() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;

    bool modifiable(const std::string& key) override;
    bool hasString(const std::string& key) const override;
    /// "name" is the storing item's name without the format's suffix.
    bool getString(const std::string& key, std::string& value) const override;

    bool keepFailedTargets = false; ///< a copy that failed leaves what it wrote

protected:
    void populateIndex() const override;
    /// Raises un::exception if there is none.
    Item& storingItem() const;

private:
    /// The root of the tree; null while there is none to walk.
    EntryFolder* walkRoot() const;

    const Format& described;
    pattern::AcquiredPtr<Item> storing;
    pattern::AcquiredPtr<Archive> outer;
    Mode open_mode;
    std::uint64_t shift = 0;
    mutable std::unique_ptr<ArchiveWalk> walk;
};

/// The smallest complete archive: plain answers where Archive leaves gaps, so that a format's class overrides
/// only what it really does.
class HARBOR6_API SuperArchive : public Archive {
public:
    SuperArchive(const Format& format, Item& storing_item, unsigned mode);
    ~SuperArchive() override;

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

/// An entry of an archive, which it must not outlive: all that it answers, it asks the archive.
class HARBOR6_API ArchiveItem : public virtual Item {
public:
    ~ArchiveItem() override;

    using Item::archive;

    Archive* archive() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;
    std::uint64_t position() override;
    void commitItem() override;
    /// The archive itself, whatever folder path the entry has.
    Folder* acquireParent() override;
    bool exists() override;

    /// The archive to which the entry belongs, not counted.
    virtual Archive* owningArchive() const = 0;
    virtual void itemCommitted();
};

} // namespace harbor6

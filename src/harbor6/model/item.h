#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/shell/attributes.h"
#include "harbor6/shell/ref_counted.h"

#include <string>

namespace harbor6 {

class Archive;
class File;
class Folder;
class Format;
class HarborShell;

/// What a folder can contain.
class HARBOR6_API Containable {
public:
    Containable() = default;
    Containable(const Containable&) = delete;
    Containable& operator=(const Containable&) = delete;

    /// The folder that contains this, with a reference for the caller; null if there is none.
    virtual Folder* acquireParent();
    /// Raises un::exception: not a movable item. So does erase(), unless a class can do it.
    virtual void moveTo(Folder& target);
    /// Whether this exists in its storage; true by default. Folder operations call create() only if not.
    virtual bool isCreated();
    /// Whether the parent finds an item of this name; false by default.
    virtual bool exists();
    /// Creates this in its storage; nothing by default.
    virtual void create();
    /// Removes this from its storage.
    virtual void erase();

protected:
    ~Containable() = default;
};

/// A node of the tree that a host sees: a file, a folder, an archive, an entry of an archive. It stores
/// neither name nor parent: the name is the attribute "name", the parent what acquireParent returns.
///
/// Items are counted. An operation whose name begins with "acquire" returns a pointer that carries one
/// reference for the caller, or null; all other pointers and references are not counted. Any thread may
/// count, everything else belongs to one thread at a time.
class HARBOR6_API Item : public pattern::RefCounted, public Containable, public Attributes {
public:
    ~Item() override;

    // The item as what it is; null if it is something else.

    virtual const File* asFile() const;
    virtual File* asFile();
    virtual const Folder* asFolder() const;
    virtual Folder* asFolder();
    virtual const Archive* asArchive() const;
    virtual Archive* asArchive();
    /// Whether both represent the same object of the same storage: entries of one archive by position(),
    /// items outside archives by "fsSpec". An archive is the same as itself only.
    virtual bool isSameItem(const Item* other) const;
    /// The archive that contains this; null if none does. An archive returns itself.
    virtual const Archive* archive() const;
    virtual Archive* archive();
    /// The format of the archive or file system that contains this.
    virtual const Format& format() const = 0;
    virtual Format& format() = 0;
    /// The host, by default that of format(), which must have one.
    virtual HarborShell& shell() const;
    /// Raises un::implemented.
    virtual void retarget(Folder& parent, const std::string& name);
    /// Renames an item that isn't created or is being adopted. Raises un::implemented for any other, and if
    /// the name is refused.
    virtual void retarget(const std::string& name);
    /// Reserved, as are the two tests below, which return false; never called.
    virtual void reservedHook();
    /// Makes the new state take effect in the item's storage; nothing by default.
    virtual void commitItem();
    virtual bool reservedTestA(std::uint64_t x);
    virtual bool reservedTestB(std::uint64_t x);
    /// Returns one reference. The last one first erases the item if setEraseOnRelease asked for it and it is
    /// created; a failure of that erase is ignored.
    virtual void release();
    virtual void setEraseOnRelease(bool erase);
    /// A number that differs among the entries of an archive. Raises un::implemented by default.
    virtual std::uint64_t position();

    // Every item has "fileSystemItem", and a folder computes "numItems", "totalItems", "pluralContent",
    // "containsLocked", "containsEncrypted", "compressedSize" and "uncompressedSize" from its content. None
    // of them can be set, and available() is false for the counts and sizes.

    bool available(const std::string& key) const override;
    bool modifiable(const std::string& key) override;
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool hasInteger(const std::string& key) const override;
    /// Sets `value` to 0 on a folder, even if it returns false.
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    /// As in the base; then "modTime" of a source without "createTime" is set as "createTime" too.
    void cloneAttributes(const Attributes& source, bool withName) override;

    bool adopting = false; ///< being moved into a folder: may be renamed although it is created
    bool expanded = false; ///< made by the expansion of an archive

protected:
    Item() = default;

    /// Copies "fInfo", "fXInfo", "dInfo" and "dXInfo".
    bool cloneStructure(const std::string& key, const Attributes& source) override;
    void populateIndex() const override;

private:
    bool eraseOnRelease = false;
};

} // namespace harbor6

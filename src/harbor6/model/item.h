#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/shell/attributes.h"
#include "harbor6/shell/ref_counted.h"

#include <string>

namespace harbor6 {

class Folder;

/// What can stand in a folder.
class HARBOR6_API Containable {
public:
    Containable() = default;
    Containable(const Containable&) = delete;
    Containable& operator=(const Containable&) = delete;

    /// The folder that holds this, with a reference for the caller, or null.
    virtual Folder* acquireParent();
    virtual void moveTo(Folder& target);
    /// It stands in its storage. Folder operations call create() only where this says false.
    virtual bool isCreated();
    /// The parent finds it under its name.
    virtual bool exists();
    virtual void create();
    virtual void erase();

protected:
    ~Containable() = default;
};

class Archive;
class File;
class Folder;
class Format;
class HarborShell;

/// A node that a host can see: a file, a folder, an archive, an entry of an archive. It is counted, can stand
/// in a folder, and has named attributes. It stores neither a name nor a parent: the name is the attribute
/// "name", the parent what acquireParent answers. An operation whose name begins with "acquire" returns a
/// pointer that carries one reference for the caller, or null. Counting is safe from any thread, all else
/// belongs to one thread at a time.
class HARBOR6_API Item : public pattern::RefCounted, public Containable, public Attributes {
public:
    ~Item() override;

    virtual const File* asFile() const;
    virtual File* asFile();
    virtual const Folder* asFolder() const;
    virtual Folder* asFolder();
    virtual const Archive* asArchive() const;
    virtual Archive* asArchive();
    /// Whether both stand for one thing in one storage.
    virtual bool isSameItem(const Item* other) const;
    /// The archive in which this lies, not counted; null if it lies in none. An archive lies in itself.
    virtual const Archive* archive() const;
    virtual Archive* archive();
    virtual const Format& format() const = 0;
    virtual Format& format() = 0;
    virtual HarborShell& shell() const;
    virtual void retarget(Folder& parent, const std::string& name);
    /// Renames an item that isn't created or is being adopted; all others refuse.
    virtual void retarget(const std::string& name);
    virtual void reservedHook();
    /// Makes the new state count in the item's storage.
    virtual void commitItem();
    virtual bool reservedTestA(std::uint64_t x);
    virtual bool reservedTestB(std::uint64_t x);
    /// Gives one reference back. The last one erases the item first if that was asked for and it is created;
    /// a failure of that erase is dropped.
    virtual void release();
    virtual void setEraseOnRelease(bool erase);
    /// Tells entries of one archive apart.
    virtual std::uint64_t position();

    bool available(const std::string& key) const override;
    bool modifiable(const std::string& key) override;
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    /// As the base; a source without "createTime" gives its "modTime" for it.
    void cloneAttributes(const Attributes& source, bool withName) override;

    bool adopting = false; ///< it is being moved into a folder, and may be renamed although it is created
    bool expanded = false; ///< an archive's expansion made it

protected:
    Item() = default;

    bool cloneStructure(const std::string& key, const Attributes& source) override;
    void populateIndex() const override;

private:
    bool eraseOnRelease = false;
};

} // namespace harbor6

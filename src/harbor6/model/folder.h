#pragma once

#include "harbor6/model/container.h"
#include "harbor6/model/item.h"

namespace harbor6 {

/// An item that contains items. It holds none itself: content comes from what a concrete folder overrides of
/// Container, new items from the factories _newFile and _newFolder. All that brings items in is written here
/// once, against those.
///
/// `uniqueName` false means that the given name is wanted and a clash goes to the client; true changes the
/// name until it is free. A client that declines gives a null result, never an exception.
class HARBOR6_API Folder : public virtual Item, public Container {
public:
    ~Folder() override;

    const Folder* asFolder() const override;
    Folder* asFolder() override;

    virtual void adoptItem(Item& item);
    /// Moves `item` into this folder and gives what stands here afterwards.
    virtual Item* acquireAdoptedItem(Item& item);
    virtual void adoptContent(Container& source);
    virtual ContainerAdaptor* acquireAdoptedContent(Container& source);
    virtual void RemoveItem(Item* removedItem);
    virtual void addItem(const Item& item, bool uniqueName);
    /// Copies `item` into this folder; an archive that the client wants expanded comes as its content.
    virtual Item* acquireAddedItem(const Item& item, bool uniqueName);
    virtual void addContent(const Container& source);
    virtual ContainerAdaptor* acquireAddedContent(const Container& source);
    /// Makes a folder like this one in `target` and fills it by addContentTo.
    virtual void copyContentTo(Folder& target) const;
    /// These three make a folder object for each component but the last, and create all above the last
    /// folder. With `create` they create what they give, too.
    virtual Item* acquireItemFromPath(const std::string& path);
    virtual File* acquireNewFileFromPath(const std::string& path, bool create);
    virtual Item* acquireMatchingItem(const Item& other);
    /// The first item of that name, byte for byte. A folder inside an archive finds items only if the
    /// archive's open mode has mode_search.
    virtual Item* acquireItemFromName(const std::string& name);
    virtual File* acquireNewFileFromName(const std::string& name, bool uniqueName);
    virtual File* acquireNewFileLike(const Attributes& model, bool uniqueName);
    /// Copies a file, changing its format on the way if `format` is another one than this folder's.
    virtual File* acquireCopiedFile(const File& source, bool uniqueName, const Format* format);
    virtual Folder* acquireNewFolderFromPath(const std::string& path, bool create);
    virtual Folder* acquireCreatedFolder(const std::string& name);
    virtual Folder* acquireNewFolderFromName(const std::string& name, bool uniqueName);
    virtual Folder* acquireNewFolderLike(const Attributes& model, bool uniqueName);
    virtual bool hasItemNamed(const std::string& name) const;
    /// Adds to `count`; false without `deep`, or where a folder below can't tell.
    virtual bool getTotalItems(std::int64_t& count, bool deep) const;
    virtual bool getContainsLocked(bool& out, bool deep) const;
    virtual bool getContainsEncrypted(bool& out, bool deep) const;
    virtual bool getUncompressedSize(std::int64_t& size, bool deep) const;
    virtual bool getCompressedSize(std::int64_t& size, bool deep) const;
    virtual Item* acquireExpandedFile(const File& file, bool uniqueName);
    virtual Folder* acquireCopiedFolder(const Folder& folder, bool uniqueName);
    virtual Item* acquireCopiedItem(const Item& item, bool uniqueName);
    /// False for a folder that is this one or holds it.
    virtual bool mayHoldFolder(const Folder* folder) const;
    virtual Item* _adoptItem(Item& item);
    /// Copies every item of `source` here; the results go to `added` unless that is null.
    virtual void _addContent(const Container& source, ContainerAdaptor* added);
    /// The factories: a new item object that belongs to this folder, counted.
    virtual File* _newFile();
    virtual Folder* _newFolder();

    /// Lets the only item in `result`, a folder in this one that was made for an archive's content, take that
    /// folder's place; `result` is the item then. Where it holds none or several, or anything fails, it stays
    /// as it is.
    void promoteOnlyItem(pattern::AcquiredPtr<Item>& result);

    /// Finds out where a folder for what `model` describes may stand. If `name` is taken in `target`, the
    /// client of `asker` decides, and may leave another name, and another folder or none in `target`; false
    /// if it gave up. `standing` is the folder that bears the name then, null if the name is free. Anything
    /// else of that name raises un::exception.
    static bool settleFolderName(const Item& asker, const Attributes& model, std::string& name,
                                 pattern::AcquiredPtr<Folder>& target,
                                 pattern::AcquiredPtr<Folder>& standing);

protected:
    Folder() = default;

private:
    void makeNameUnique(std::string& name) const;
    pattern::AcquiredPtr<Folder> acquirePathParent(const std::string& path, bool create);
    bool flagInside(const char* key, bool (Folder::*inside)(bool&, bool) const, bool& out, bool deep) const;
    bool sumInside(const char* key, std::int64_t& size, bool deep) const;

    pattern::AcquiredPtr<Item> expandInPlace(const File& file, bool uniqueName, bool& expand);
    pattern::AcquiredPtr<Item> expandCopy(const File& original, File* copy, bool uniqueName);
    pattern::AcquiredPtr<Item> expandArchive(Archive& found, bool uniqueName);
    pattern::AcquiredPtr<Folder> scratchFolder();
};

} // namespace harbor6

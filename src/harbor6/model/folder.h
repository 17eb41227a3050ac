#pragma once

#include "harbor6/model/container.h"
#include "harbor6/model/item.h"

namespace harbor6 {

/// An item that contains items. It stores none itself: a concrete folder overrides createIterator, which
/// supplies the content, and the factories _newFile and _newFolder, which make new items. The operations that
/// find, make, copy, move and expand items are written here once, on top of those.
///
/// `uniqueName` false: the given name is wanted, and the client decides if it is taken. True: the name is
/// changed until it is free. Where the client declines, the result is null; failures are exceptions, and what
/// was made before one remains unless setEraseOnRelease removes it. Every pointer from an `acquire` operation
/// is counted for the caller. What the factories, the client and the streams raise passes through.
class HARBOR6_API Folder : public virtual Item, public Container {
public:
    ~Folder() override;

    const Folder* asFolder() const override;
    Folder* asFolder() override;

    /// acquireAdoptedItem without its result.
    virtual void adoptItem(Item& item);
    /// Moves `item` into this folder and returns the item that is here afterwards: `item` itself if it was
    /// here already, an existing folder of its name into which its content was moved, or what _adoptItem
    /// returns. Raises un::exception for a folder that would move into itself.
    virtual Item* acquireAdoptedItem(Item& item);
    /// acquireAdoptedContent without its result.
    virtual void adoptContent(Container& source);
    /// Moves every item of `source` into this folder; returns the list of the items that are here afterwards.
    virtual ContainerAdaptor* acquireAdoptedContent(Container& source);
    /// Raises un::implemented by default.
    virtual void RemoveItem(Item* removedItem);
    /// acquireAddedItem without its result.
    virtual void addItem(const Item& item, bool uniqueName);
    /// acquireCopiedItem, as the main entry: an archive that contains this folder is told what comes, and a
    /// basic::exception is raised as a format::exception.
    virtual Item* acquireAddedItem(const Item& item, bool uniqueName);
    /// acquireAddedContent without its result.
    virtual void addContent(const Container& source);
    /// The same entry for every item of `source`: runs _addContent and returns the list of the new items.
    virtual ContainerAdaptor* acquireAddedContent(const Container& source);
    /// Makes a folder like this one in `target` and fills it by addContentTo. Nothing if the client declines.
    virtual void copyContentTo(Folder& target) const;
    /// The item at `path`, whose components are separated by '/'; null if there is none. The folders on the
    /// way are made as objects by _newFolder, and all but the last of them are created.
    virtual Item* acquireItemFromPath(const std::string& path);
    /// A new file at `path`. Its folders are made as above; `create` creates the last of them and the file.
    virtual File* acquireNewFileFromPath(const std::string& path, bool create);
    /// The item here that has the name of `other`; null if there is none or `other` has no name.
    virtual Item* acquireMatchingItem(const Item& other);
    /// The first item of that name, compared byte for byte; null if there is none. A folder in an archive
    /// finds nothing unless the archive is open with Archive::mode_search.
    virtual Item* acquireItemFromName(const std::string& name);
    /// A new file object of that name, not created. Doesn't test whether the name is taken, unless
    /// uniqueName.
    virtual File* acquireNewFileFromName(const std::string& name, bool uniqueName);
    /// A new file object with the name and the attributes of `model`, not created; null if the client
    /// declines. Raises un::exception if the name that the client leaves is taken.
    virtual File* acquireNewFileLike(const Attributes& model, bool uniqueName);
    /// Copies a file, converting it if `format` is neither null nor this folder's. Null if the client
    /// declines. If the copy fails the target is erased, unless the source's archive has keepFailedTargets.
    virtual File* acquireCopiedFile(const File& source, bool uniqueName, const Format* format);
    /// A new folder at `path`. All folders above it are created; `create` creates it too.
    virtual Folder* acquireNewFolderFromPath(const std::string& path, bool create);
    /// A new folder of that name, committed.
    virtual Folder* acquireCreatedFolder(const std::string& name);
    /// As for files. Raises un::implemented if the folder refuses the name.
    virtual Folder* acquireNewFolderFromName(const std::string& name, bool uniqueName);
    /// As for files; but an existing folder of the name that the client leaves is returned as it is.
    virtual Folder* acquireNewFolderLike(const Attributes& model, bool uniqueName);
    /// Whether acquireItemFromName finds an item.
    virtual bool hasItemNamed(const std::string& name) const;
    /// Adds the number of items at all depths to `count`. False without `deep`, or if a folder can't tell.
    virtual bool getTotalItems(std::int64_t& count, bool deep) const;
    /// Set `out` to whether this folder, or with `deep` an item at any depth, has "locked" or "encrypted"
    /// set; an item that can't tell ends the search. False without `deep` if this folder can't tell.
    virtual bool getContainsLocked(bool& out, bool deep) const;
    virtual bool getContainsEncrypted(bool& out, bool deep) const;
    /// Have each item in order store its size in bytes in `size`, up to the first that can't tell. Return the
    /// last item's answer, false without `deep`. No sum is made: a later value replaces an earlier one.
    virtual bool getUncompressedSize(std::int64_t& size, bool deep) const;
    virtual bool getCompressedSize(std::int64_t& size, bool deep) const;
    /// Copies a file, or expands it if it is an archive and the client wants that. Null if the client
    /// declines.
    virtual Item* acquireExpandedFile(const File& file, bool uniqueName);
    /// Copies a folder with its content; null if the client declines.
    virtual Folder* acquireCopiedFolder(const Folder& folder, bool uniqueName);
    /// acquireExpandedFile or acquireCopiedFolder, by the kind of `item`. Raises un::exception for another
    /// kind.
    virtual Item* acquireCopiedItem(const Item& item, bool uniqueName);
    /// False if `folder` is this folder or one above it.
    virtual bool mayHoldFolder(const Folder* folder) const;
    /// Moves `item` here by a copy and an erase; null, and no erase, if the client declines the copy.
    virtual Item* _adoptItem(Item& item);
    /// Copies every item of `source` into this folder. The results are added to `added` unless that is null.
    virtual void _addContent(const Container& source, ContainerAdaptor* added);
    /// The factories: a new item object in this folder, nameless and not created. By default they raise
    /// un::implemented.
    virtual File* _newFile();
    virtual Folder* _newFolder();

    /// `result` is a folder in this one, made for an archive's content. If it contains exactly one item, that
    /// item replaces the folder, here and in `result`. Failures are ignored and leave the folder in place.
    void promoteOnlyItem(pattern::AcquiredPtr<Item>& result);

    /// Decides where to make a folder for what `model` describes. If `name` is taken in `target`, the client
    /// of `asker` is asked, and may change `name` and replace or clear `target`; false if it declined or
    /// cleared it. `existing` becomes the folder that has the resulting name, and is left null if the name is
    /// free. Raises un::exception if something else has the name.
    static bool settleFolderName(const Item& asker, const Attributes& model, std::string& name,
                                 pattern::AcquiredPtr<Folder>& target,
                                 pattern::AcquiredPtr<Folder>& existing);

protected:
    Folder() = default;

private:
    void makeNameUnique(std::string& name) const;
    pattern::AcquiredPtr<Folder> acquirePathParent(const std::string& path, bool create);
    bool flagInside(const char* key, bool (Folder::*inside)(bool&, bool) const, bool& out, bool deep) const;
    bool sizeInside(const char* key, std::int64_t& size, bool deep) const;

    pattern::AcquiredPtr<Item> expandInPlace(const File& file, bool uniqueName, bool& expand);
    pattern::AcquiredPtr<Item> expandCopy(const File& original, File* copy, bool uniqueName);
    pattern::AcquiredPtr<Item> expandArchive(Archive& archive, bool uniqueName);
    pattern::AcquiredPtr<Folder> scratchFolder();
};

} // namespace harbor6

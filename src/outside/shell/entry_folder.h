#pragma once

#include "model/folder.h"
#include "outside/shell/walk_entry.h"

#include <map>
#include <vector>

namespace harbor6 {

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

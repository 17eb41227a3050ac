#pragma once

#include "harbor6/hosts/expansion_state.h"
#include "harbor6/hosts/plain_item.h"
#include "harbor6/hosts/target.h"

namespace host {

/// A folder of the target on disk. It stores only its path. Lookups cost one system call. A folder that can't
/// be used (a file or a link has its name, or the name is invalid) doesn't end the expansion: it contains
/// nothing, its sub-folders can't be used either, and `prepareFor` says why for each file that would go into
/// it.
class HARBOR6_API DiskFolder : public TargetFolder, public PlainItem<DiskFolder> {
public:
    /// The top of the target.
    explicit DiskFolder(expansion_state& expansion);
    /// The folder at `path`, which can't be used if `obstacle` is not empty.
    DiskFolder(expansion_state& expansion, std::shared_ptr<const std::string> path, std::string obstacle);

    const std::string& path() const override { return *folder_path; }
    std::string prepareFor(const std::string& name) override;
    std::string nameHere(const std::string& name) const override { return expansion.changed(name); }
    /// Whether the sub-folders of this one are left out, so that their content goes into it.
    bool leavesOutFolders() const { return left_out < expansion.leave_out; }
    void replaceNext(const std::string& name) override { expansion.replace_next(path(), nameHere(name)); }
    /// The name for the sub-folder `name`, where a file may have that name.
    std::string freeFolderName(const std::string& name);
    pattern::AcquiredPtr<harbor6::Folder> makeUnusable(const std::string& name,
                                                       const std::string& obstacle) const override;

    /// True also for a folder that can't be used: there is nothing to create.
    bool isCreated() override;
    void create() override;
    void commitItem() override;
    /// Null for the top.
    harbor6::Folder* acquireParent() override;
    /// Removes the folder, which must be empty.
    void erase() override;

    /// Walks the entries on disk, sorted by name, as they are now.
    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override;
    /// Renames an item of the same target; copies and erases any other.
    harbor6::Item* _adoptItem(harbor6::Item& item) override;

    /// The entry `name` on disk, or a file whose name is reserved but which isn't written yet.
    harbor6::Item* acquireItemFromName(const std::string& name) override;
    bool hasItemNamed(const std::string& name) const override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;

protected:
    std::string itemName() const override;
    /// Names a folder to be made, once; an empty name makes it the same folder as its parent. Renames one
    /// that exists.
    bool setItemName(const std::string& name) override;
    std::optional<fs::Spec> identity() const override;

private:
    entry_kind lookUp(const std::string& name) const;
    std::vector<pattern::AcquiredPtr<harbor6::Item>> content() const;
    void make();

    expansion_state& expansion;
    std::shared_ptr<const std::string> folder_path; ///< until it has a name, the parent's
    std::string obstacle;                           ///< why it can't be used; empty if it can
    unsigned left_out = 0;                          ///< folders between the top and this one that aren't made
    bool named = true;
};

} // namespace host

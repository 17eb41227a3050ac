#pragma once

#include "harbor6/model/folder.h"
#include "host/disk/disk_file.h"
#include "host/disk/expansion_state.h"

namespace host {

/// A folder into which the program brings an archive's content.
class TargetFolder : public harbor6::Folder {
public:
    /// No system takes longer paths, and an archive can state names without end.
    static constexpr std::size_t longest_path = 4096;

    /// From the top of the target, with '/' between names; empty for the top itself.
    virtual const std::string& path() const = 0;
    /// Why no file called `name` can be made here, empty if one can. May make the folder ready for it.
    virtual std::string refusal(const std::string& name) = 0;
};

/// A folder of the target on disk. It holds nothing but its path. Lookups cost one system call. A folder that
/// can't be had (a file or a link stands there, or no disk can bear its name) doesn't end the expansion: it
/// finds nothing, its sub-folders can't be had either, and `refusal` says why for each file that would go
/// into it.
class DiskFolder : public TargetFolder, public PlainItem<DiskFolder> {
public:
    explicit DiskFolder(expansion_state& expansion);
    DiskFolder(expansion_state& expansion, std::shared_ptr<const std::string> path, std::string obstacle);

    const std::string& path() const override { return *folder_path; }
    /// Makes the folder, if that isn't done yet.
    std::string refusal(const std::string& name) override;
    expansion_state& shared() const { return expansion; }

    /// True also for a folder that can't be had: there is nothing to create.
    bool isCreated() override;
    void create() override;
    void commitItem() override;
    /// Null for the target itself.
    harbor6::Folder* acquireParent() override;
    /// Removes the folder, which must be empty.
    void erase() override;

    /// What stands in the folder on disk, by name, as it was when the walk began.
    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override;
    /// Moves an item of the same target by renaming it.
    harbor6::Item* _adoptItem(harbor6::Item& item) override;

    /// What stands on disk under `name`, or a file of that name that was asked for and isn't written yet.
    harbor6::Item* acquireItemFromName(const std::string& name) override;
    bool hasItemNamed(const std::string& name) const override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;

protected:
    std::string itemName() const override;
    /// A folder to be made gets its name so, once; the empty name makes it the same folder as its parent. One
    /// that stands gets another.
    bool setItemName(const std::string& name) override;
    std::optional<fs::Spec> identity() const override;

private:
    entry_kind look(const std::string& name) const;
    std::vector<pattern::AcquiredPtr<harbor6::Item>> content() const;
    void make();

    expansion_state& expansion;
    std::shared_ptr<const std::string> folder_path; ///< until it has a name, the parent's
    std::string obstacle;                           ///< why it can't be had; empty if it can
    bool named = true;
};

} // namespace host

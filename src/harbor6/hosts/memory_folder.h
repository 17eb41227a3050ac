#pragma once

#include "harbor6/groundwork/time.h"
#include "harbor6/hosts/plain_item.h"
#include "harbor6/hosts/target.h"
#include "harbor6/model/single_fork_file.h"

#include <map>
#include <memory>
#include <set>
#include <string>

namespace host {

/// One file of a memory_target.
struct memory_file {
    std::shared_ptr<std::string> bytes = std::make_shared<std::string>();
    std::optional<fs::time> modified{}; ///< as the archive states it; empty if it doesn't
    bool complete = false;              ///< all bytes arrived, and none is damaged
};

/// What the folders and files of one tree in memory share, and what they leave. It outlives them. One thread.
struct memory_target {
    /// `bound` is for the bytes of all files: more raise un::exception.
    explicit memory_target(harbor6::Format& format, std::uint64_t bound = ~std::uint64_t{0})
        : plain_format(format), most(bound) {}

    harbor6::Format& plain_format;
    const std::uint64_t most; ///< bytes of all files together

    std::map<std::string, memory_file> files{}; ///< by their path from the top
    std::set<std::string> folders{};            ///< their paths
    std::uint64_t size = 0;                     ///< bytes of all files
};

class MemoryFile;

/// The bytes of a file in memory.
class HARBOR6_API MemoryFork : public harbor6::Fork {
public:
    explicit MemoryFork(MemoryFile* file) : owner(file) {}

    /// Empty while the file has none.
    harbor6::data::CountedInput input(bool expanding) const override;
    harbor6::data::CountedOutput output(bool expanding) override;

private:
    MemoryFile* owner;
};

/// A file in memory: one that is there, or one to be made, which is in memory_target::files from its name on
/// and is removed from there if it never gets bytes.
class HARBOR6_API MemoryFile : public TargetFile,
                               public harbor6::OneForkFile<MemoryFork>,
                               public PlainItem<MemoryFile> {
public:
    /// A file to be made in `folder`.
    MemoryFile(memory_target& shared, std::string folder);
    /// The file `name`, which is there.
    MemoryFile(memory_target& shared, std::string folder, std::string name);
    ~MemoryFile() override;

    std::string path() const override;
    bool isCreated() override;
    harbor6::Folder* acquireParent() override;
    void erase() override;
    void commitItem() override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;

protected:
    std::string itemName() const override;
    bool setItemName(const std::string& name) override;
    std::optional<any::time> itemTime() const override;
    bool setItemTime(const any::time& time) override;

private:
    friend class MemoryFork;
    memory_file* entry() const;

    memory_target& target;
    std::string folder;
    std::string name; ///< empty until it is set
    bool made = false;
};

/// A folder in memory. It stores only its path.
class HARBOR6_API MemoryFolder : public TargetFolder, public PlainItem<MemoryFolder> {
public:
    /// The top, without `path`.
    explicit MemoryFolder(memory_target& shared, std::string path = {});

    const std::string& path() const override { return folder_path; }
    std::string prepareFor(const std::string& name) override;

    bool isCreated() override;
    void create() override;
    void commitItem() override;
    harbor6::Folder* acquireParent() override;
    /// Removes the folder with all that is in it.
    void erase() override;
    std::unique_ptr<pattern::Iterator<harbor6::Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const harbor6::Item*>> createIterator() const override;
    harbor6::Item* acquireItemFromName(const std::string& name) override;
    bool hasItemNamed(const std::string& name) const override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;

protected:
    std::string itemName() const override;
    bool setItemName(const std::string& name) override;

private:
    std::vector<pattern::AcquiredPtr<harbor6::Item>> content() const;

    memory_target& target;
    std::string folder_path; ///< until it has a name, the parent's
    bool named = true;
};

} // namespace host

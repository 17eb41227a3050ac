#pragma once

#include "harbor6/groundwork/time.h"
#include "harbor6/model/single_fork_file.h"
#include "host/disk/disk_file.h"
#include "host/disk/disk_folder.h"
#include "host/disk/expansion_state.h"
#include "host/platform/file_writer.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace harbor6 {
class Format;
} // namespace harbor6

namespace host {

/// One file as a pass over the archive showed it.
struct tally_entry {
    std::string path;
    std::uint64_t size = 0; ///< bytes that came
    std::optional<fs::time> modified;
};

/// What the folders and files of one pass that keeps nothing share. It outlives them.
struct tally {
    harbor6::Format& format;
    journal& log;
    /// Gets every whole file, in the order of their ends; may be null.
    std::vector<tally_entry>* entries = nullptr;
};

/// Counts the bytes that are written into it.
class TallyFork : public harbor6::Fork {
public:
    harbor6::data::CountedOutput output(bool expanding) override;

    std::shared_ptr<segment_watch> watch; ///< null until the output is taken
};

/// A file of which only the name, the time and the size are kept.
class TallyFile : public harbor6::OneForkFile<TallyFork>, public PlainItem<TallyFile> {
public:
    TallyFile(tally& shared, std::shared_ptr<const std::string> folder);
    ~TallyFile() override;

    void commitItem() override;

protected:
    std::string itemName() const override;
    bool setItemName(const std::string& name) override;
    bool setItemTime(const any::time& time) override;

private:
    std::string path() const;

    tally& shared;
    std::shared_ptr<const std::string> folder_path;
    std::string name;
    std::optional<fs::time> modified;
    bool committed = false;
};

/// A folder that takes an archive's content, counts it, and keeps nothing else.
class TallyFolder : public TargetFolder, public PlainItem<TallyFolder> {
public:
    explicit TallyFolder(tally& shared,
                         std::shared_ptr<const std::string> path = std::make_shared<const std::string>());

    const std::string& path() const override { return *folder_path; }
    std::string refusal(const std::string& name) override;

    bool isCreated() override;
    /// Nothing stands here, however much was brought in.
    harbor6::Item* acquireItemFromName(const std::string& name) override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;

protected:
    std::string itemName() const override;
    /// Makes this folder the one of that name in it; the empty name leaves it as it is.
    bool setItemName(const std::string& name) override;

private:
    tally& shared;
    std::shared_ptr<const std::string> folder_path;
    bool too_deep = false; ///< the path goes on, but nobody will have it
};

} // namespace host

#pragma once

#include "host/journal.h"
#include "host/target_folder.h"
#include "model/file.h"
#include "outside/shell/fork.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

class segment_watch;

/// One file as a pass over the archive showed it.
struct tally_entry {
    std::string path;
    std::uint64_t size = 0; ///< bytes that came
    std::optional<fs::time> modified;
};

/// What the items below share. It outlives them.
struct tally {
    harbor6::Format& format;
    journal& log;
    std::vector<tally_entry>* entries =
        nullptr; ///< gets every whole file, in the order of their ends; may be null
};

/// A folder that takes an archive's content, counts it, and keeps nothing else.
class TallyFolder : public TargetFolder {
public:
    TallyFolder(tally& shared, std::shared_ptr<const std::string> path);

    const std::string& path() const override { return *folder_path; }
    std::string refusal(const std::string& name) override;

    void destroy() override;
    const harbor6::Format& format() const override;
    harbor6::Format& format() override;
    bool isCreated() override;
    /// Nothing stands here, however much was brought in.
    harbor6::Item* acquireItemFromName(const std::string& name) override;
    harbor6::File* _newFile() override;
    harbor6::Folder* _newFolder() override;
    bool setString(const std::string& key, const std::string& value) override;

protected:
    void populateIndex() const override;
    Index* newIndex() const override;

private:
    tally& shared;
    std::shared_ptr<const std::string> folder_path;
    bool too_deep = false; ///< the path goes on, but nobody will have it
};

/// A file of which only the name, the time and the size are kept.
class TallyFile : public harbor6::File {
public:
    TallyFile(tally& shared, std::shared_ptr<const std::string> folder);
    ~TallyFile() override;

    void destroy() override;
    const harbor6::Format& format() const override;
    harbor6::Format& format() override;
    void commitItem() override;
    harbor6::Fork* getMainFork() override;
    bool setString(const std::string& key, const std::string& value) override;
    bool setTime(const std::string& key, const any::time& value) override;

protected:
    void populateIndex() const override;
    Index* newIndex() const override;

private:
    class TallyFork : public harbor6::Fork {
    public:
        harbor6::data::CountedOutput output(bool expanding) override;

        std::shared_ptr<segment_watch> watch;
    };

    std::string path() const;

    tally& shared;
    std::shared_ptr<const std::string> folder_path;
    std::string name;
    std::optional<fs::time> modified;
    TallyFork fork;
    bool committed = false;
};

} // namespace host

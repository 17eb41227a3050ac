#pragma once

#include "model/one_fork_file.h"
#include "outside/shell/entry_fork.h"

namespace harbor6 {

/// A file of an archive. One whose bytes never came has no input.
class EntryFile : public WalkEntry<EntryFile>, public OneForkFile<EntryFork> {
public:
    explicit EntryFile(std::shared_ptr<WalkState> state);
    ~EntryFile() override;

    void itemCommitted() override;
    bool hasInteger(const std::string& key) const override;
    /// "uncompressedSize" too.
    bool getInteger(const std::string& key, std::int64_t& value) const override;

protected:
    std::optional<any::time> itemTime() const override;
    bool setItemTime(const any::time& time) override;
    void populateIndex() const override;

private:
    std::optional<any::time> modified;
};

} // namespace harbor6

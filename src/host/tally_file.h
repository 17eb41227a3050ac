#pragma once

#include "host/plain_item.h"
#include "host/segment_watch.h"
#include "host/tally.h"
#include "model/one_fork_file.h"

#include <memory>

namespace host {

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

} // namespace host

#pragma once

#include "host/plain_item.h"
#include "host/tally.h"
#include "host/target_folder.h"

#include <memory>

namespace host {

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

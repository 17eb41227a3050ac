#pragma once

#include "model/archive_item.h"
#include "model/folder.h"

namespace harbor6::cab {

class Archive;

/// A component of a path in a cabinet. It shows the client what folder is wanted and lives for that question;
/// it must not outlive its archive, which it doesn't count.
class FolderItem : public ArchiveItem, public Folder {
public:
    FolderItem(cab::Archive* archive, const std::string& name);
    ~FolderItem() override;

    harbor6::Archive* owningArchive() const override;
    void destroy() override { delete this; }
    bool modifiable(const std::string& /*key*/) override { return false; }
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;

protected:
    void populateIndex() const override;
    Index* newIndex() const override;

private:
    std::string name;
    cab::Archive* owner;
};

} // namespace harbor6::cab

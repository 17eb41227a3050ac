#pragma once

#include "format/cab/file_header.h"
#include "model/archive_item.h"
#include "model/named_item.h"
#include "model/single_fork_file.h"

#include <memory>

namespace harbor6::cab {

class Archive;

/// A file record of a cabinet. It shows the client what file there is, and gives its attributes to the
/// target's file: a name and a modification time. No stream leads from it to the cabinet's bytes. It must not
/// outlive its archive, which it doesn't count.
class FileItem : public ArchiveItem, public SingleForkFile, public NamedItem<FileItem> {
public:
    FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> record);
    ~FileItem() override;

    harbor6::Archive* owningArchive() const override;
    bool modifiable(const std::string& key) override;

protected:
    std::string itemName() const override;
    std::optional<any::time> itemTime() const override;

private:
    std::shared_ptr<const ::format::cab::file_header> record;
    cab::Archive* owner;
};

} // namespace harbor6::cab

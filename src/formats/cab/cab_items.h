#pragma once

#include "formats/cab/records.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/single_fork_file.h"

#include <memory>

namespace harbor6::cab {

class Archive;

/// A file record of a cabinet. It shows the client what file there is, and gives its attributes to the
/// target's file: a name and a modification time. No stream leads from it to the cabinet's bytes. It must not
/// outlive its archive, which it doesn't count.
class FileItem : public ArchiveItem, public SingleForkFile {
public:
    FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> record);
    ~FileItem() override;

    harbor6::Archive* owningArchive() const override;
    void destroy() override { delete this; }
    bool modifiable(const std::string& /*key*/) override { return false; }
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool hasTime(const std::string& key) const override;
    bool getTime(const std::string& key, any::time& value) const override;

protected:
    void populateIndex() const override;
    Index* newIndex() const override;

private:
    std::shared_ptr<const ::format::cab::file_header> record;
    cab::Archive* owner;
};

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

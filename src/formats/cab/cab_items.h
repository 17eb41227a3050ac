#pragma once

#include "formats/cab/cab_records.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"
#include "harbor6/model/named_item.h"
#include "harbor6/model/single_fork_file.h"

#include <memory>

namespace harbor6::cab {

class Archive;

/// A file record of a cabinet, by which the client learns of the file and from which the target's file gets
/// its name and modification time. With Archive::Details::attributes it also has "uncompressedSize", the DOS
/// flags as "readOnly", "hidden", "system", "archive" and "executable", and all of them as the structure
/// io::win32::attributes "win32Attributes"; with Details::all the whole stored path as "pathName", the
/// cabinet folder's method as "compMethod" ("stored", "MSZIP", "LZX:21"), its number as "folderIndex", and
/// the file's place in it as "folderOffset". Nothing can be set. Its fork has no data: the cabinet's bytes
/// reach the target through the block output. Its archive, which it doesn't count, must outlive it.
class FileItem : public ArchiveItem, public SingleForkFile, public NamedItem<FileItem> {
public:
    /// `compression` is that of the cabinet folder that holds the file.
    FileItem(cab::Archive* archive, std::shared_ptr<const ::format::cab::file_header> record,
             std::uint16_t compression = 0);
    ~FileItem() override;

    harbor6::Archive* owningArchive() const override;
    bool modifiable(const std::string& /*key*/) override { return false; }
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    bool hasStructure(const std::string& key) const override;
    bool getStructure(const std::string& key, un::structure& value) const override;

protected:
    /// The last component of the record's path; all that was kept of a path that was too long.
    std::string itemName() const override;
    std::optional<any::time> itemTime() const override;
    void populateIndex() const override;
    /// One for all items with the same details.
    Index* newIndex() const override;

private:
    std::shared_ptr<const ::format::cab::file_header> record;
    cab::Archive* owner;
    std::uint16_t compression;
};

/// A component of a path in a cabinet, by which the client learns of the folder. It has a name, and nothing
/// can be set. Its archive, which it doesn't count, must outlive it.
class FolderItem : public ArchiveItem, public Folder, public NamedItem<FolderItem> {
public:
    FolderItem(cab::Archive* archive, const std::string& name);
    ~FolderItem() override;

    harbor6::Archive* owningArchive() const override;
    bool modifiable(const std::string& /*key*/) override { return false; }

protected:
    std::string itemName() const override;

private:
    std::string name;
    cab::Archive* owner;
};

} // namespace harbor6::cab

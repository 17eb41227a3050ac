#pragma once

#include "formats/cfb/cfb_document.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/named_item.h"
#include "harbor6/model/single_fork_file.h"

namespace harbor6::cfb {

/// A compound document; its items are streams and storages. It keeps no state between calls. One thread at a
/// time.
class Archive : public SuperArchive {
public:
    using SuperArchive::SuperArchive;
    ~Archive() override;

    /// Expands the content into `target`: asks the client which streams to expand, creates them as files and
    /// all storages as folders in `target`, and then copies the streams. Each top-level item that is created
    /// or found is added to `adaptor` too, unless that is null.
    ///
    /// The storage must seek. Damage of a stream or of the tables is a format::exception. With the option
    /// `published_rules` the client is told each one and decides; without, what is sound is expanded, and
    /// then the first one is raised. Failures of streams and of the target pass through.
    void addContentTo(Folder& target, ContainerAdaptor* adaptor) const override;
};

/// A stream of a compound document, by which the client learns of it: it has a name and "uncompressedSize",
/// and nothing can be set. Its fork has no data. Its archive, which it doesn't count, must outlive it.
class StreamItem : public ArchiveItem, public SingleForkFile, public NamedItem<StreamItem> {
public:
    StreamItem(harbor6::Archive& archive, const ::format::cfb::item& stream);
    ~StreamItem() override;

    harbor6::Archive* owningArchive() const override { return &owner; }
    bool modifiable(const std::string& /*key*/) override { return false; }
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;

protected:
    std::string itemName() const override { return name; }
    void populateIndex() const override;

private:
    harbor6::Archive& owner;
    std::string name;
    std::uint64_t size;
};

/// A storage, likewise.
class StorageItem : public ArchiveItem, public Folder, public NamedItem<StorageItem> {
public:
    StorageItem(harbor6::Archive& archive, std::string name);
    ~StorageItem() override;

    harbor6::Archive* owningArchive() const override { return &owner; }
    bool modifiable(const std::string& /*key*/) override { return false; }

protected:
    std::string itemName() const override { return name; }

private:
    harbor6::Archive& owner;
    std::string name;
};

} // namespace harbor6::cfb

#pragma once

#include "formats/cab/cab_records.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/file_splitter.h"
#include "harbor6/model/path_walk.h"

#include <memory>
#include <vector>

namespace harbor6::cab {

/// A cabinet. It keeps no state between calls: every addContentTo() reads the storage once, from the first
/// byte to the last block and strictly forward. The offsets that the records state are not used. For one
/// thread at a time.
class Archive : public SuperArchive {
public:
    Archive(const harbor6::Format& format, Item& storing_item, unsigned mode);
    /// Closes the archive; exceptions of that are dropped.
    ~Archive() override;

    /// Expands the content into `target` in one pass: reads header and records, asks the client which files
    /// to expand, creates those files and their folders in `target`, and decodes every cabinet folder from
    /// its first block to its last into them, even if no file of it is expanded. Each top-level item that is
    /// created or found is added to `adaptor` too, unless that is null.
    ///
    /// Raises un::implemented for a cabinet that continues in a next one and format::exception for unsound or
    /// unsupported content; failures of streams, decoders and the target pass through. Files and folders
    /// created before a failure remain. A client that refuses a new folder ends the pass without a failure.
    void addContentTo(Folder& target, ContainerAdaptor* adaptor) const override;
};

/// Cuts the expanded stream of one cabinet folder into its files; see FileSplitter for its states.
class block_output : public FileSplitter {
public:
    using block_entry = entry;
};

/// One pass over a cabinet's bytes, from the header to the last block. It lives for one call of
/// Archive::addContentTo and owns none of its arguments. The archive's options apply: with `published_rules`
/// a name that the end of the input cuts raises stream::cut_short.
class content_scan {
public:
    content_scan(Archive& archive, stream::input& input, Folder& target, ContainerAdaptor* adaptor);

    /// Runs the pass, once per object. What it raises is said at Archive::addContentTo.
    void run();

private:
    struct folder_entry {
        std::unique_ptr<::format::cab::folder_header> header;
        std::unique_ptr<block_output> output;
    };

    void readFolders();
    /// Reads a file record, and creates the file with its folders if the client wants it. Returns false if
    /// the client refused a folder, which ends the pass.
    bool addFile();
    void expandFolders();

    Archive& archive;
    stream::input& input;
    ContainerAdaptor* adaptor;
    PathWalk target_folders;
    const ::format::cab::text_rules texts;
    ::format::cab::archive_header header;
    std::vector<folder_entry> cabinet_folders;
};

} // namespace harbor6::cab

#pragma once

#include "formats/cab/cab_records.h"
#include "formats/cab/cab_targets.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/file_splitter.h"

#include <memory>
#include <vector>

namespace harbor6::cab {

/// A cabinet. It keeps no state between calls: every addContentTo() reads the storage once, from the first
/// byte to the last block and strictly forward. The offsets that the records state are not used, unless the
/// archive's option `published_rules` is set: then a PublishedScan does the reading. For one thread at a
/// time.
class Archive : public SuperArchive {
public:
    Archive(const harbor6::Format& format, Item& storing_item, unsigned mode);
    /// Closes the archive; exceptions of that are dropped.
    ~Archive() override;

    /// Expands the content into `target` in one pass: reads header and records, asks the client which files
    /// to expand, creates those files and their folders in `target`, and decodes every cabinet folder from
    /// its first block to its last into them, even if no file of it is expanded (but see `wanted_only` at
    /// Options). Each top-level item that is
    /// created or found is added to `adaptor` too, unless that is null.
    ///
    /// Raises un::implemented for a cabinet that continues in a next one and format::exception for unsound or
    /// unsupported content; failures of streams, decoders and the target pass through. Files and folders
    /// created before a failure remain. With `published_rules` a set of cabinets is read whole, and failures
    /// of content are told to the client as that option says. A client that refuses a new folder ends the
    /// pass without a failure.
    void addContentTo(Folder& target, ContainerAdaptor* adaptor) const override;
};

/// Cuts the expanded stream of one cabinet folder into its files; see FileSplitter for its states.
class block_output : public FileSplitter {
public:
    using block_entry = entry;
};

/// One pass over a cabinet's bytes, from the header to the last block. It lives for one call of
/// Archive::addContentTo and owns none of its arguments. With the archive's option `wanted_only` a cabinet
/// folder is decoded as far as a wanted file needs it, and the rest of its blocks passed over by their sizes.
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
    target_finder targets;
    const ::format::cab::text_rules texts;
    ::format::cab::archive_header header;
    std::vector<folder_entry> cabinet_folders;
};

} // namespace harbor6::cab

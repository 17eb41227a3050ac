#pragma once

#include "formats/cab/records.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/file_splitter.h"
#include "harbor6/model/path_walk.h"

#include <memory>
#include <vector>

namespace harbor6::cab {

/// A cabinet. It keeps no state between calls: every addContentTo reads its storage from the first byte on,
/// once, strictly forward. The offsets that a cabinet states are not consulted.
class Archive : public SuperArchive {
public:
    Archive(const harbor6::Format& format, Item& storing_item, unsigned mode);
    /// Ends what is still open; what that raises ends there.
    ~Archive() override;

    /// Takes the content out into `target` in one pass: reads header and records, asks the client which files
    /// are wanted, makes those files and their folders, and runs every cabinet folder, wanted or not, from
    /// its first block to its last through its decoder into them. Each top-level item that is made or found
    /// goes to `adaptor` too, unless that is null.
    ///
    /// A cabinet that continues in a next one raises un::implemented, one whose content is refused
    /// format::exception; failures of streams, decoders and of the target pass through. What was made before
    /// a failure stays. A client that refuses a new folder ends the pass without a failure.
    void addContentTo(Folder& target, ContainerAdaptor* adaptor) const override;
};

/// Cuts the stream of one cabinet folder into its files.
class block_output : public FileSplitter {
public:
    using block_entry = entry;
};

/// One pass over a cabinet's bytes, from header to last block. It lives for one call of Archive::addContentTo
/// and owns none of what it is given.
class content_scan {
public:
    content_scan(Archive& archive, stream::input& input, Folder& target, ContainerAdaptor* adaptor);

    void run();

private:
    struct folder_entry {
        std::unique_ptr<::format::cab::folder_header> header;
        std::unique_ptr<block_output> output;
    };

    void readFolders();
    /// False ends the whole pass: the client refused a folder.
    bool readFile();
    void expandFolders();

    Archive& archive;
    stream::input& input;
    ContainerAdaptor* adaptor;
    PathWalk folders;
    ::format::cab::archive_header header;
    std::vector<folder_entry> cabinet_folders;
};

} // namespace harbor6::cab

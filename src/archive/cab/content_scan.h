#pragma once

#include "archive/cab/block_output.h"
#include "format/cab/archive_header.h"
#include "format/cab/folder_header.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace harbor6 {
class ClientInterface;
class ContainerAdaptor;
} // namespace harbor6

namespace harbor6::cab {

class Archive;

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
    /// Walks from `parent` down the folders of `stem`; `parent` ends at the folder reached, or where the
    /// client gave up. False ends the whole pass.
    bool walkFolders(const std::string& stem, pattern::AcquiredPtr<Folder>& parent);
    /// Finds or makes the top-level folder for `token`. False if the client gave it up.
    bool topFolder(const std::string& token, pattern::AcquiredPtr<Folder>& parent,
                   pattern::AcquiredPtr<Folder>& folder);
    ClientInterface& client() const;
    void expandFolders();

    Archive& archive;
    stream::input& input;
    Folder& target;
    ContainerAdaptor* adaptor;
    ::format::cab::archive_header header;
    std::vector<folder_entry> cabinet_folders;
    std::map<std::string, pattern::AcquiredPtr<Folder>>
        folders; ///< top-level ones by their name in the cabinet
};

} // namespace harbor6::cab

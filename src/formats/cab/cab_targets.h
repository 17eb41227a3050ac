#pragma once

#include "formats/cab/cab_records.h"
#include "harbor6/model/path_walk.h"

#include <memory>

namespace harbor6::cab {

class Archive;

/// Makes the targets for the file records of one pass: asks the client about each file, and has the target
/// folder make those that are wanted, with their folders. It lives for one pass and owns none of its
/// arguments.
class target_finder {
public:
    target_finder(Archive& archive, Folder& target, ContainerAdaptor* adaptor);

    /// `file` becomes the target for `record`, null if it is not wanted; `compression` is that of its cabinet
    /// folder. Returns false if the client refused a folder, which ends the pass. What the client and the
    /// target raise passes through.
    bool find(const std::shared_ptr<const ::format::cab::file_header>& record, std::uint16_t compression,
              pattern::AcquiredPtr<File>& file);

private:
    Archive& archive;
    ContainerAdaptor* adaptor;
    PathWalk folders;
};

} // namespace harbor6::cab

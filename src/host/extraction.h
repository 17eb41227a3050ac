#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"

namespace host {

struct archive_source;
struct command_context;

/// How an archive's content reaches the target.
enum class traversal {
    one_pass,     ///< straight into the target, as the archive is read
    item_by_item, ///< the whole archive is read first; needed to expand archives among its items
};

/// An archive on `file`, which may be a volume that continues an archive, with what the host gives it. Null
/// if no format recognises it. Raises what reading raises.
pattern::AcquiredPtr<harbor6::Archive> acquire_archive(command_context& context, harbor6::File& file);

/// Extracts the archive into `target`, and reports what ends that early; the target reports failures of
/// single files. Where the whole archive can't be read first, it is extracted in one pass, and that its
/// archives stay files is reported.
void extract_archive(command_context& context, const archive_source& source, harbor6::Folder& target,
                     traversal how = traversal::one_pass);

} // namespace host

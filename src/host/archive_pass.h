#pragma once

#include "harbor6/model/folder.h"
#include "host/format_registry.h"
#include "host/report.h"

namespace host {

/// Which way an archive's content goes.
enum class traversal {
    one_pass,     ///< straight into the target
    item_by_item, ///< item by item out of the archive's walk, so that archives among them can be expanded too
};

/// Brings the content of the archive in the file `path` ("-" is the standard input) into `target`, and
/// reports whatever ends it. Says whether the pass came to its end; single files may have gone wrong all the
/// same, of which the target tells. `plain_format` is the format of items outside any archive.
bool run_pass(format_registry& formats, harbor6::Format& plain_format, report& log, const std::string& path,
              harbor6::Folder& target, traversal way = traversal::one_pass);

} // namespace host

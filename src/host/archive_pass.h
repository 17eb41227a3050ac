#pragma once

#include "harbor6/model/folder.h"
#include "host/registry.h"
#include "host/report.h"

namespace host {

/// Which way an archive's content goes.
enum class road {
    one_pass, ///< straight into the target
    by_items, ///< item by item out of the archive's walk, so that archives among them can be expanded too
};

/// Brings the content of the archive in the file `path` ("-" is the standard input) into `target`, and
/// reports whatever ends it. Says whether the pass came to its end; single files may have gone wrong all the
/// same, of which the target tells. `items` is the format of items that lie in no archive.
bool run_pass(registry& known, harbor6::Format& items, report& log, const std::string& path,
              harbor6::Folder& target, road way = road::one_pass);

} // namespace host

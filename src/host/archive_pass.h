#pragma once

#include "host/registry.h"
#include "host/report.h"
#include "model/folder.h"

namespace host {

/// Brings the content of the archive in the file `path` ("-" is the standard input) into `target` in one
/// pass, and reports whatever ends it. Says whether the pass came to its end; single files may have gone
/// wrong all the same, of which the target tells. `items` is the format of items that lie in no archive.
bool run_pass(registry& known, harbor6::Format& items, report& log, const std::string& path,
              harbor6::Folder& target);

} // namespace host

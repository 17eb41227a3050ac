#pragma once

#include "harbor6/model/folder.h"

#include <string>

namespace host {

struct command_context;

/// How an archive's content reaches the target.
enum class traversal {
    one_pass,     ///< straight into the target, as the archive is read
    item_by_item, ///< the whole archive is read first; needed to expand archives among its items
};

/// Extracts the archive in the file `path` ("-" is the standard input) into `target`, and reports what ends
/// that early. Returns whether the end was reached; the target reports failures of single files. Where the
/// whole archive can't be read first, it is extracted in one pass, and that its archives stay files is
/// reported.
bool extract_archive(command_context& context, const std::string& path, harbor6::Folder& target,
                     traversal how = traversal::one_pass);

} // namespace host

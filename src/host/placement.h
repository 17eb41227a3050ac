#pragma once

#include "host/commands.h"

#include <optional>
#include <string>

namespace host {

/// Where the content of an archive goes.
struct placement {
    std::string folder;         ///< the top of the target
    bool follows_links = false; ///< the top may be a symbolic link: the user named it
    /// The only item at the archive's top, which gets no folder around it: `folder` is the current one, and
    /// the item doesn't exist there. Empty otherwise.
    std::string only_item{};
    bool may_replace = true; ///< as the user asked; false: nothing is replaced, whatever the user asked
};

/// Decides where the archive in the file `archive` goes, by the command line and by the head of the archive.
/// Writes nothing. Empty if it goes nowhere, which is reported.
std::optional<placement> place(command_context& context, const std::string& archive);

} // namespace host

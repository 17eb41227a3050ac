#pragma once

#include "host/commands.h"

#include <optional>
#include <string>

namespace host {

/// Where the content of an archive goes.
struct placement {
    std::string folder; ///< the top of the target
    bool follows_links =
        false; ///< the top may be a symbolic link, as the user named it or it is the current folder
    bool may_replace = true; ///< as the user asked; false: nothing is replaced, whatever the user asked
};

/// The name of the folder for the content of an archive: the archive's own without its suffix.
std::string own_folder(const archive_source& archive);

/// Decides where the archive goes, by the command line and by the head of the archive.
/// Writes nothing. Empty if it goes nowhere, which is reported.
std::optional<placement> place(command_context& context, const archive_source& archive);

} // namespace host

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
    std::string shown{};     ///< the folder in it that the content goes into; empty if that is itself
};

/// The name of the folder for the content of an archive: that of its file without the suffix, or of the
/// archive inside a file that is none itself.
std::string own_folder(const archive_source& archive);

/// Whether the archive goes into a folder of its own, wherever the user wants its content.
bool needs_own_folder(const command_context& context, const archive_source& archive);

/// Decides where the archive goes, with those that follow it in its file if that is an archive: by the
/// command line and by the head of the archive. Writes nothing. Empty if it goes nowhere, which is reported.
std::optional<placement> place(command_context& context, const archive_source& archive);

} // namespace host

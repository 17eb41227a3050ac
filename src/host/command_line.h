#pragma once

#include "host/exit_status.h"
#include "host/options.h"

#include <variant>

namespace host {

/// The command line, or how to end at once where it asks for help or makes no sense; the text is printed by
/// then.
std::variant<options, exit_status> parse_command_line(int count, char** arguments);

} // namespace host

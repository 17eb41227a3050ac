#pragma once

#include "host/client.h"
#include "host/report.h"

#include <string>
#include <variant>
#include <vector>

namespace host {

/// What the command line asks for.
struct options {
    enum class command { expand, list, test, formats };

    command to_run = command::formats;
    std::vector<std::string> archives; ///< "-" is the standard input
    std::vector<std::string> patterns;
    std::string target;   ///< empty: a folder named after each archive
    std::string encoding; ///< of names; empty: the default
    std::string formats;  ///< folder of plug-ins; empty: the one beside the program
    bool nested = false;  ///< archives inside archives are expanded too
    unsigned depth = 16;  ///< how far down
    clash_policy policy = clash_policy::refuse;
    bool verbose = false;
    bool json = false;
};

/// The command line, or how to end at once where it asks for help or makes no sense; the text is printed by
/// then.
std::variant<options, exit_status> parse_command_line(int count, char** arguments);

} // namespace host

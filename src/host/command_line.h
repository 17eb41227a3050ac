#pragma once

#include "host/report.h"

#include <string>
#include <variant>
#include <vector>

namespace host {

/// What happens where a file of that name exists.
enum class clash_policy {
    refuse,    ///< the existing file stays, which is an error
    keep,      ///< the existing file stays
    overwrite, ///< the new file replaces it once it is complete
};

/// What the command line asks for.
struct options {
    enum class command { expand, list, test, formats };

    command to_run = command::formats;
    std::vector<std::string> archives; ///< "-" is the standard input
    std::vector<std::string> patterns; ///< the files to expand; empty: all
    std::string target;                ///< empty: a folder named after each archive
    std::string encoding;              ///< of names; empty: the default
    std::string formats;               ///< folder of plug-ins; empty: the one beside the program
    bool nested = false;               ///< archives inside archives are expanded too
    unsigned depth = 16;               ///< how many levels of them
    bool limited = true;               ///< they may expand to a nesting_budget, not to any size
    clash_policy policy = clash_policy::refuse;
    bool sync = false; ///< what was expanded survives a crash of the machine
    bool verbose = false;
    bool json = false;
};

/// The options, or the exit status if the text was already printed: the help, or what is wrong.
std::variant<options, exit_status> parse_command_line(int count, char** arguments);

} // namespace host

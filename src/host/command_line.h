#pragma once

#include "host/report.h"

#include <string>
#include <variant>
#include <vector>

namespace host {

/// What happens where a file of that name exists.
enum class clash_policy {
    ask,    ///< as the user says on the terminal; without one the existing file stays, which is an error
    never,  ///< the existing file stays
    always, ///< the new file replaces it once it is complete
    rename, ///< the new file gets a free name: "name (2).txt"
    newer,  ///< the new file replaces it if its time is later
};

/// When output is colored.
enum class color_choice { automatic, never, always };

/// What the command line asks for.
struct options {
    enum class command { expand, list, test, find, formats };

    command to_run = command::formats;
    bool bare = false;                 ///< archives alone were given, without a command: they are listed
    std::vector<std::string> archives; ///< "-" is the standard input
    std::vector<std::string> only;     ///< patterns of the wanted files; empty: all
    std::vector<std::string> exclude;  ///< patterns of files that are not wanted
    bool ignore_case = false;          ///< in patterns
    std::string encoding;              ///< of names; empty: the default
    bool confined = true;              ///< the process gives up what it does not need
    std::string formats;               ///< folder of plug-ins; empty: the one beside the program

    std::string target; ///< empty: the current folder
    clash_policy policy = clash_policy::ask;
    bool nested = false; ///< archives inside archives are expanded too
    unsigned depth = 16; ///< how many levels of them
    bool limited = true; ///< they may expand to a nesting_budget, not to any size
    bool lower = false;  ///< names in lower case
    bool flat = false;   ///< all files go into one folder
    unsigned strip = 0;  ///< so many folders of each path are left out
    bool times = true;
    bool attributes = true;
    bool ignore_checksums = false; ///< data whose checksum is wrong is kept
    bool keep_broken = false;      ///< what came of an incomplete file stays: "NAME.partial"
    bool to_stdout = false;
    bool dry_run = false;
    bool sync = false; ///< what was expanded survives a crash of the machine

    bool human_sizes = false;
    bool tree = false;
    bool check = false; ///< list reads the data too

    unsigned jobs = 0; ///< archives at a time; 0: as many as there are processors
    color_choice color = color_choice::automatic;
    bool sha256 = false; ///< test prints digests

    bool quiet = false;
    bool verbose = false; ///< more is said of each file or format
    bool json = false;
};

/// The options, or the exit status if the text was already printed: the help, or what is wrong.
std::variant<options, exit_status> parse_command_line(int count, char** arguments);

} // namespace host

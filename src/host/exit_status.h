#pragma once

namespace host {

/// How the program ends.
enum class exit_status {
    ok = 0,     ///< everything that was asked for was done
    failed = 1, ///< something wasn't, and the standard error says what
    usage = 2   ///< the command line makes no sense, and nothing was done
};

} // namespace host

#pragma once

#include <string>
#include <vector>

namespace host {

/// What a confined process may still reach on disk: files, or folders with everything below them. Paths that
/// don't exist are left out.
struct reachable_paths {
    std::vector<std::string> readable;
    std::vector<std::string> listable; ///< folders whose names may be read, but not their files
    std::vector<std::string> writable; ///< readable too
};

/// Takes from the process, for the rest of its life, what extracting archives does not need, so that a defect
/// in the code of a format reaches as little as possible: files other than `allowed` and what is open, and
/// running programs, sockets, and looking into other processes. To be called while the process has one
/// thread; processes that it starts are confined too. Where the system lacks a means, the others are used,
/// without a word.
void confine(const reachable_paths& allowed);

/// Takes starting processes and signals to others too.
void confine_to_itself();

} // namespace host

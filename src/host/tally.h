#pragma once

#include "host/journal.h"
#include "outside/groundwork/time.h"

#include <optional>
#include <string>
#include <vector>

namespace harbor6 {
class Format;
} // namespace harbor6

namespace host {

/// One file as a pass over the archive showed it.
struct tally_entry {
    std::string path;
    std::uint64_t size = 0; ///< bytes that came
    std::optional<fs::time> modified;
};

/// What the folders and files of one pass that keeps nothing share. It outlives them.
struct tally {
    harbor6::Format& format;
    journal& log;
    /// Gets every whole file, in the order of their ends; may be null.
    std::vector<tally_entry>* entries = nullptr;
};

} // namespace host

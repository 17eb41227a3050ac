#pragma once

#include "stream/nio_input.h"
#include "stream/nio_output.h"

namespace nio {

/// Moves up to `limit` bytes (all ones: no limit) in pieces of at most `chunk` bytes and returns how many
/// went. A `chunk` of 0 is taken as 1.
HARBOR6_API std::uint64_t copy(input& source, output& target, std::uint64_t limit, unsigned chunk);

/// Reads and drops up to `count` bytes in pieces of at most `chunk` and returns how many there were.
HARBOR6_API std::uint64_t skip(input& source, std::uint64_t count, unsigned chunk);

} // namespace nio

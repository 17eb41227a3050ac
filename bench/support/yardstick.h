#pragma once

#include <cstddef>
#include <string>

namespace yardstick {

/// What the benchmarks decode, taken from the machine they run on: `size` bytes, from files in a fixed order,
/// begun again when they run out. Headers and sources below /usr/include.
std::string source_text(std::size_t size);
/// Programs and shared libraries below /usr/bin and /usr/lib.
std::string programs(std::size_t size);

/// The bytes of a file; raises std::runtime_error if it can't be read.
std::string file_bytes(const std::string& path);

} // namespace yardstick

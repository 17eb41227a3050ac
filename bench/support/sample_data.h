#pragma once

#include <cstddef>
#include <string>

namespace sample_data {

/// What the benchmarks decode, taken from the machine they run on: `size` bytes, from files in a fixed order,
/// no two alike, repeated when they run out; raises std::runtime_error if there are none. Headers, sources
/// and scripts below /usr/include, /usr/lib and /usr/share.
std::string source_text(std::size_t size);
/// Programs and shared libraries below /usr/bin and /usr/lib.
std::string programs(std::size_t size);

/// The bytes of a file; raises std::runtime_error if it can't be read.
std::string file_bytes(const std::string& path);

} // namespace sample_data

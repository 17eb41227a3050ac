#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Raw Deflate streams by zlib, and data to make them of. Nothing of zlib's header shows here: its function
/// deflate and our namespace can't meet in one file.
namespace zlib_streams {

enum strategy { standard, filtered, huffman_only, run_length, fixed_codes };
inline constexpr strategy strategies[] = {standard, filtered, huffman_only, run_length, fixed_codes};

/// `data` as one stream, with `dictionary` as the history ahead of it.
std::string compress(std::string_view data, int level, strategy how = standard,
                     std::string_view dictionary = {});
/// One stream for each 32768 bytes of `data`, each with what lies before as its history.
std::vector<std::string> compress_blocks(std::string_view data, int level);

/// Text of a small vocabulary, the same for the same seed.
std::string words(std::size_t size, unsigned seed = 1);
std::string noise(std::size_t size, unsigned seed = 1);

} // namespace zlib_streams

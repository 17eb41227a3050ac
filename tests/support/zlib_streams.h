#pragma once

#include <string>
#include <string_view>
#include <vector>

/// Raw Deflate streams made by zlib, and data to compress. zlib.h is not included here: its function deflate
/// would clash with the namespace of that name.
namespace zlib_streams {

enum strategy { standard, filtered, huffman_only, run_length, fixed_codes };
inline constexpr strategy strategies[] = {standard, filtered, huffman_only, run_length, fixed_codes};

/// `data` as one stream, with `dictionary` as its history.
std::string compress(std::string_view data, int level, strategy how = standard,
                     std::string_view dictionary = {});
/// One stream for each 32768 bytes of `data`, each with the data before it as its history.
std::vector<std::string> compress_blocks(std::string_view data, int level);

/// Text of a small vocabulary, the same for the same seed.
std::string words(std::size_t size, unsigned seed = 1);
std::string noise(std::size_t size, unsigned seed = 1);

} // namespace zlib_streams

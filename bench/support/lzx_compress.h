#pragma once

#include "support/lzx_writer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace support {

struct lzx_settings {
    unsigned window_bits = 21;
    std::uint32_t block_bytes = 128 * 1024;
    unsigned chain = 24;                ///< candidates tried at each position
    std::uint32_t translation_size = 0; ///< of x86 calls; 0: none
};

/// Compresses `bytes` with hash chains and lazy matching; each block is verbatim or aligned, whichever is
/// smaller.
std::vector<lzx_frame> lzx_compress(std::string bytes, const lzx_settings& settings);

/// What a writer does to a frame whose calls are to be translated back; `position` is the frame's place in
/// the stream.
void make_calls_absolute(char* frame, std::size_t length, std::uint32_t translation_size,
                         std::uint32_t position);

} // namespace support

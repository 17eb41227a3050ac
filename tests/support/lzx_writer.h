#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// One literal (length 1, `value` the byte) or one match (`value` the offset).
struct lzx_token {
    std::uint32_t length = 1;
    std::uint32_t value = 0;
};

/// The compressed bytes of one frame, and how many they stand for.
struct lzx_frame {
    std::string bytes;
    std::uint32_t size;
};

/// How a block is to be coded; an empty list of lengths is worked out from what the block needs.
struct lzx_shape {
    bool aligned = false;
    bool repeats = true; ///< use the repeated offsets where they fit
    bool runs = true;    ///< use the pre-tree's symbols 17 to 19
    std::vector<std::uint8_t> main_lengths = {};
    std::vector<std::uint8_t> length_lengths = {};
    std::vector<std::uint8_t> aligned_lengths = {};
};

/// Writes LZX blocks into frames, as they come. put() alone makes whatever stream a test wants.
class lzx_writer {
public:
    explicit lzx_writer(unsigned window_bits, std::uint32_t frame_bytes = 32768);

    /// 0 says that calls are not translated. Without this call, the first block says so.
    void translation(std::uint32_t size);
    void block(const std::vector<lzx_token>& tokens, const lzx_shape& shape = {});
    void raw(const std::string& bytes, const std::array<std::uint32_t, 3>& offsets = {1, 1, 1});
    std::vector<lzx_frame> finish();

    void put(std::uint32_t value, unsigned count);
    void header(unsigned type, std::uint32_t size);
    /// Lengths as deltas on `previous`, which they replace.
    void lengths(const std::vector<std::uint8_t>& wanted, std::vector<std::uint8_t>& previous, bool runs);
    /// Counts bytes of output, and ends the frame when it is full.
    void advance(std::uint32_t count);

    std::vector<std::uint8_t> main_literals; ///< the lengths of the last block with trees
    std::vector<std::uint8_t> main_matches;
    std::vector<std::uint8_t> length_symbols;
    std::array<std::uint32_t, 3> repeated = {1, 1, 1};

private:
    struct item;
    item code(const lzx_token& token, bool repeats);
    void flush_bits(bool whole_word);
    void put_code(const std::vector<std::uint8_t>& code_lengths, const std::vector<std::uint32_t>& codes,
                  unsigned symbol);

    std::uint32_t frame_bytes;
    std::uint32_t produced = 0;
    bool first = true;
    bool pad = false;
    std::uint32_t word = 0;
    unsigned word_bits = 0;
    std::string current;
    std::vector<lzx_frame> frames;
};

/// Code lengths of a complete prefix code, none above `limit`. No symbol in use gives no code; a single one
/// gets a companion.
std::vector<std::uint8_t> prefix_lengths(std::vector<std::uint32_t> counts, unsigned limit);

} // namespace support

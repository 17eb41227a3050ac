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

/// The compressed bytes of one frame, and the number of bytes they expand to.
struct lzx_frame {
    std::string bytes;
    std::uint32_t size;
};

/// How a block is to be coded. An empty list of code lengths is computed from the block's symbols.
struct lzx_shape {
    bool aligned = false;
    bool repeats = true; ///< use the repeated offsets where they fit
    bool runs = true;    ///< use the pre-tree's symbols 17 to 19
    std::vector<std::uint8_t> main_lengths = {};
    std::vector<std::uint8_t> length_lengths = {};
    std::vector<std::uint8_t> aligned_lengths = {};
};

/// Writes LZX blocks and cuts them into frames. put() writes any bits, to make invalid streams.
class lzx_writer {
public:
    explicit lzx_writer(unsigned window_bits, std::uint32_t frame_bytes = 32768);

    /// Writes the size for the translation of calls, 0 for none. If it isn't called, the first block writes
    /// 0.
    void translation(std::uint32_t size);
    void block(const std::vector<lzx_token>& tokens, const lzx_shape& shape = {});
    void raw(const std::string& bytes, const std::array<std::uint32_t, 3>& offsets = {1, 1, 1});
    std::vector<lzx_frame> finish();

    void put(std::uint32_t value, unsigned count);
    void header(unsigned type, std::uint32_t size);

private:
    struct item;
    item code(const lzx_token& token, bool repeats);
    void flush_bits(bool whole_word);
    /// Lengths as deltas on `previous`, which they replace.
    void lengths(const std::vector<std::uint8_t>& wanted, std::vector<std::uint8_t>& previous, bool runs);
    /// Counts bytes of output, and ends a full frame.
    void advance(std::uint32_t count);

    std::vector<std::uint8_t> main_literals; ///< the lengths of the last block with trees
    std::vector<std::uint8_t> main_matches;
    std::vector<std::uint8_t> length_symbols;
    std::array<std::uint32_t, 3> repeated = {1, 1, 1};

    std::uint32_t frame_bytes;
    std::uint32_t produced = 0;
    bool first = true;
    bool pad = false;
    std::uint32_t word = 0;
    unsigned word_bits = 0;
    std::string current;
    std::vector<lzx_frame> frames;
};

/// Code lengths of a complete prefix code, none above `limit`. If no symbol is used all are 0; if a single
/// one is, another symbol gets a code too.
std::vector<std::uint8_t> prefix_lengths(std::vector<std::uint32_t> counts, unsigned limit);

} // namespace support

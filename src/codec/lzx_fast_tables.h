#pragma once

#include "codec/lzx_tables.h"

#include <cstdint>
#include <vector>

namespace algorithm::lzx {

/// Bytes of room that the fast loop needs behind the window and its mirror.
constexpr std::uint32_t fast_overhang = 64;

// Main table entries of the fast loop, 32 bits each. The low six bits are always the bits to drop, so that
// they are a shift count as they stand.
//
//   literals   1 0 .... nn  second    first     ..  dddddd     nn (1 or 2) bytes
//   match      0 s a  llllllll l  pppppp  ccccc  dddddd ..     see below
//
// A match of length l, from slot p, has a code of c bits and then d - c plain footer bits; after those, with
// a set, an aligned offset symbol. With s set the entry is no more than a hint: either c is 0 and the code is
// longer than the table's index, or c is the length of the main symbol's code and a length symbol follows.
namespace entry {

constexpr std::uint32_t literal = 1u << 31;
constexpr std::uint32_t special = 1u << 30;
constexpr std::uint32_t aligned = 1u << 29;
constexpr unsigned drop_mask = 63;
constexpr unsigned code_shift = 6;
constexpr unsigned code_mask = 31;
constexpr unsigned slot_shift = 11;
constexpr unsigned slot_mask = 63;
constexpr unsigned length_shift = 17;
constexpr unsigned length_mask = 511;
constexpr unsigned first_shift = 8;
constexpr unsigned second_shift = 16;
constexpr unsigned count_shift = 24;
constexpr unsigned count_mask = 3;

static_assert(longest_match <= length_mask && maximum_slots <= slot_mask && maximum_code_length <= code_mask);
static_assert(length_shift + 9 <= 29);

} // namespace entry

/// The fast loop's own tables for the current block, wide enough that almost every symbol is one load.
struct fast_tables {
    static constexpr unsigned main_index_bits = 11;
    static constexpr unsigned length_index_bits = 10;
    static constexpr std::uint16_t long_code = 0xFFFF;

    /// Makes the tables for trees that are known to be complete or, the length tree, empty. Answers false if
    /// the main tree is empty.
    bool build(const std::uint8_t* main_lengths, unsigned main_symbols, const std::uint8_t* length_lengths,
               bool aligned_block);

    /// The entry of a match; `code` bits of code are still to be dropped with the footer.
    static std::uint32_t match(unsigned slot, unsigned length, unsigned code, bool aligned_block);

    bool ready = false;  ///< `main` and `length` belong to the current block
    bool usable = false; ///< and the fast loop can go by them
    std::uint32_t main[1u << main_index_bits];
    std::uint16_t length[1u << length_index_bits]; ///< code length << 8 | symbol, or long_code
    std::uint16_t aligned[1u << aligned_bits];     ///< code length << 8 | symbol

    /// This frame's input with the bytes of each 16-bit word exchanged, for words at even and at odd offsets.
    std::vector<std::uint8_t> swapped[2];
    bool swapped_ready[2] = {};

    std::vector<std::uint8_t> kept; ///< what the window held where the fast loop writes

private:
    struct sorted_code;
    void fill_main(const sorted_code& main, const sorted_code& length, bool aligned_block);
};

} // namespace algorithm::lzx

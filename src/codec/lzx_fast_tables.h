#pragma once

#include "codec/lzx_tables.h"

#include <cstdint>
#include <vector>

namespace algorithm::lzx {

/// Bytes of room that the fast loop needs behind the window and its mirror.
constexpr std::uint32_t fast_overhang = 64;

// An entry of the fast loop's main table is a literal or a match, made so that the loop treats both alike and
// needs no branch to tell them apart. Fields that are shift counts have nothing to be masked off: a shift
// only looks at its six lowest bits.
//
//   bits  0-5   drop: bits of code and footer (without an aligned offset symbol); 0: special, see below
//         6     an aligned offset symbol follows, which stands for the footer's last 3 bits
//         7     literal
//         8-13  match: bits of code        8-15  literal: the byte
//        16-21  63 less the footer's bits, those of an aligned offset symbol counted as 3
//        22-30  length, 1 for a literal
//        31-36  where in the queue of offsets the match's offset stands: 0, 21, 42; 63 for a new one
//        37-42  how far the queue moves up: 21 for a new offset
//        43-63  what to add to footer and queue's offset to have the offset
//
// A literal has the fields of a match with the first offset of the queue, which changes nothing in it. A
// special entry is no more than a hint. Either code is 0 and the first code is longer than the index, or code
// belongs to a match of the slot in bits 16-21, and a length symbol follows.
namespace entry {

using type = std::uint64_t;

constexpr unsigned bits_mask = 63;
constexpr type aligned = 1u << 6;
constexpr type literal = 1u << 7;
constexpr unsigned code_shift = 8;
constexpr unsigned byte_shift = 8;
constexpr unsigned footer_shift = 16;
constexpr unsigned special_slot_shift = 16;
constexpr unsigned queue_shift = 31;
constexpr unsigned move_shift = 37;
constexpr unsigned length_shift = 22;
constexpr unsigned length_mask = 511;
constexpr unsigned base_shift = 43;

constexpr unsigned offset_bits = 21; ///< of one offset in the queue
constexpr unsigned no_offset = 63;   ///< past the three of the queue

/// Keeps a literal, whose offset nobody uses, clear of the offsets that need care.
constexpr type literal_base = 16;

static_assert(longest_match <= length_mask && maximum_slots <= bits_mask);
static_assert(slot_bases[maximum_slots] >> offset_bits == 0 && 3 * offset_bits == no_offset);

} // namespace entry

/// The fast loop's own tables for the current block, wide enough that almost every symbol is one load.
struct fast_tables {
    static constexpr unsigned main_index_bits = 12;
    static constexpr unsigned length_index_bits = 10;
    static constexpr std::uint16_t long_code = 0xFFFF;

    /// Makes the tables for trees that are known to be complete or, the length tree, empty. Answers false if
    /// the main tree is empty.
    bool build(const std::uint8_t* main_lengths, unsigned main_symbols, const std::uint8_t* length_lengths,
               bool in_aligned);

    /// A match whose code has `code` bits. With `code` 0 only the footer is still to come.
    static entry::type literal(unsigned symbol, unsigned code);
    static entry::type match(unsigned slot, unsigned length, unsigned code, bool in_aligned);

    bool ready = false;  ///< `main` and `length` belong to the current block
    bool usable = false; ///< and the fast loop can go by them
    entry::type main[1u << main_index_bits];
    std::uint16_t length[1u << length_index_bits]; ///< code length << 8 | symbol, or long_code
    /// Zeros, then from 128 on: (symbol less the three highest bits of the index) << 6 + code length.
    std::int16_t aligned[2u << aligned_bits] = {};

    /// This frame's input with the bytes of each 16-bit word exchanged, for words at even and at odd offsets.
    std::vector<std::uint8_t> swapped[2];
    bool swapped_ready[2] = {};

    std::vector<std::uint8_t> kept; ///< what the window held where the fast loop writes

private:
    struct sorted_code;
    void fill_main(const sorted_code& main, const sorted_code& length, bool in_aligned);
};

} // namespace algorithm::lzx

#pragma once

#include "codec/lzx_decompressor.h"
#include "codec/lzx_tables.h"

#include <array>
#include <cstdint>
#include <vector>

namespace algorithm::lzx {

/// Bytes of room that the fast loop needs behind the window and its mirror.
constexpr std::uint32_t fast_overhang = 64;

/// Bytes that a match or literal copies at least.
constexpr std::uint32_t copy_step = 32;

// An entry of the fast loop's main table is a literal or a match, made so that reading treats both alike and
// needs no branch to tell them apart. With footer and aligned offset symbol added it is a token, which says
// all about a symbol. Fields that are shift counts are six bits wide.
//
//   bits  0-5   bits of code and footer, in an entry without an aligned offset symbol; 0: special, see below
//         6     an aligned offset symbol follows, which stands for the footer's last 3 bits
//         7     literal
//         8-13  match: bits of code        8-15  literal: the byte
//        16-21  21 less the footer's bits, those of an aligned offset symbol counted as 3: the shift that
//               brings the footer from the top to its place
//        22-30  length, 1 for a literal
//        31-32  the repeated offset that changes places with the first: 1 or 2; 0 for none
//        37-42  how far the queue of offsets moves up: 21 for a new offset
//        43-63  the slot's base offset; in a token the offset, 0 for a repeated one or a literal
//
// A special entry is no more than a hint. Either code is 0 and the first code is longer than the index, or
// code belongs to a match of the slot in bits 16-21, and a length symbol follows.
namespace entry {

using type = std::uint64_t;

constexpr unsigned bits_mask = 63;
constexpr type aligned = 1u << 6;
constexpr type literal_flag = 1u << 7;
constexpr unsigned code_shift = 8;
constexpr unsigned byte_shift = 8;
constexpr unsigned footer_shift = 16;
constexpr unsigned special_slot_shift = 16;
constexpr type exchange = type{3} << 31;
constexpr unsigned exchange_mask = 3;
constexpr unsigned exchange_shift = 31;
constexpr unsigned move_shift = 37;
constexpr unsigned length_shift = 22;
constexpr unsigned length_mask = 511;
constexpr unsigned base_shift = 43;
constexpr type base_mask = ~type{0} << base_shift;

constexpr unsigned offset_bits = 21; ///< of one offset in the queue

static_assert(longest_match <= length_mask && maximum_slots <= bits_mask);
static_assert(slot_bases[maximum_slots] >> offset_bits == 0 && base_shift + offset_bits == 64);

/// A match whose code has `code` bits. With `code` 0 only the footer is still to come.
constexpr type match(unsigned slot, unsigned length, unsigned code, bool in_aligned) {
    const unsigned extra = extra_bits(slot);
    const bool aligned_symbol = in_aligned && extra >= 3;
    const bool repeated = slot < 3;
    return type{slot_bases[slot]} << base_shift | type{repeated ? 0 : offset_bits} << move_shift |
           type{repeated ? slot : 0} << exchange_shift | type{length} << length_shift |
           (offset_bits - extra) << footer_shift | code << code_shift | (aligned_symbol ? aligned : 0) |
           (code + extra - (aligned_symbol ? 3 : 0));
}

constexpr type literal(unsigned symbol, unsigned code) {
    return type{1} << length_shift | offset_bits << footer_shift | symbol << byte_shift | literal_flag | code;
}

/// The matches of each slot, without length and code.
template<bool InAligned>
constexpr std::array<type, maximum_slots> slot_matches = [] {
    std::array<type, maximum_slots> matches{};
    for (unsigned slot = 0; slot < maximum_slots; ++slot)
        matches[slot] = match(slot, 0, 0, InAligned);
    return matches;
}();

} // namespace entry

/// What one lane has read: the symbols that begin from bit `start` up to `stop`, or, where the room for
/// tokens ended, up to `reached`, which is where the next symbol begins.
struct token_stretch {
    std::uint64_t start;
    std::uint64_t stop;
    std::uint64_t reached;
    const entry::type* first; ///< each token_lanes after the other
    const entry::type* last;
};

/// The fast loop's own tables for the current block, wide enough that almost every symbol is one load.
struct fast_tables {
    static constexpr unsigned main_index_bits = 12;
    static constexpr unsigned length_index_bits = 10;
    static constexpr std::uint16_t long_code = 0xFFFF;

    /// Makes the tables for trees that are known to be complete or, the length tree, empty. Answers false if
    /// the main tree is empty.
    bool build(const std::uint8_t* main_lengths, unsigned main_symbols, const std::uint8_t* length_lengths,
               bool in_aligned);

    bool ready = false;  ///< `main` and `length` belong to the current block
    bool usable = false; ///< and the fast loop can go by them
    entry::type main[1u << main_index_bits];
    std::uint16_t length[1u << length_index_bits]; ///< code length << 8 | symbol, or long_code
    /// Zeros, then from 128 on: (symbol less the three highest bits of the index) << 43, plus code length.
    entry::type aligned[2u << aligned_bits] = {};

    static constexpr unsigned most_tokens = 4096;
    /// Of the lanes in turn. A literal is copied from its token, as many bytes as a match.
    entry::type tokens[most_tokens + copy_step / sizeof(entry::type) + 1];

    std::vector<std::uint8_t> kept; ///< what the window held where the fast loop writes

private:
    struct sorted_code;
    void fill_main(const sorted_code& main, const sorted_code& length, bool in_aligned);
};

} // namespace algorithm::lzx

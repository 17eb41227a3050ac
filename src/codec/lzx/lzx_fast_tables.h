#pragma once

#include "codec/lzx/lzx_code_order.h"
#include "codec/lzx/lzx_tables.h"

#include <cstdint>

namespace algorithm::lzx {

// An entry of the fast loop's main table is a literal or a match, made so that reading treats both alike and
// needs no branch to tell them apart.
//
//   bits  0-7   literal: the byte           match: bits of code
//         8-13  bits of code and footer, without those that an aligned offset symbol stands for; bits 8-15
//               all 0: special, see below
//        14     an aligned offset symbol follows, which stands for the footer's last 3 bits
//        16-21  match: slot
//        22-30  match: length
//        31     match
//
// A token is an entry with what follows it in the input:
//
//         8-15  bits in all
//        32-34  the aligned offset symbol
//        40-63  match: the bits behind the code
//
// A special entry is no more than a hint. Either its bits of code are 0 and the first code is longer than the
// index, or they belong to a match of that slot, and a length symbol follows.
namespace entry {

using type = std::uint32_t;
using token = std::uint64_t;

/// The bits of a shift count. Where the processor masks it by itself, this takes no instruction.
constexpr unsigned shift_mask = 63;
constexpr unsigned size_shift = 8;
constexpr type size_mask = 0xFFu << size_shift;
constexpr unsigned aligned = 64; ///< in the size
constexpr unsigned slot_shift = 16;
constexpr unsigned slot_mask = 63;
constexpr unsigned length_shift = 22;
constexpr unsigned length_mask = 511;
constexpr unsigned match_shift = 31;
constexpr unsigned symbol_shift = 32;
constexpr unsigned symbol_mask = 7;
constexpr token footer_mask = ~token{0} << 40;

static_assert(longest_match <= length_mask && maximum_slots <= slot_mask);

/// A match whose code has `code` bits.
constexpr type match(unsigned slot, unsigned length, unsigned code, bool in_aligned) {
    const unsigned extra = extra_bits(slot);
    const bool with_symbol = in_aligned && extra >= 3;
    return 1u << match_shift | length << length_shift | slot << slot_shift |
           (with_symbol ? code + extra - 3 + aligned : code + extra) << size_shift | code;
}

constexpr type literal(unsigned symbol, unsigned code) {
    return code << size_shift | symbol;
}

constexpr unsigned size(token t) {
    return static_cast<std::uint8_t>(t >> size_shift);
}
/// 1 for a match, 0 for a literal.
constexpr unsigned match_count(token t) {
    return static_cast<type>(t) >> match_shift;
}

} // namespace entry

/// The codes of a block with trees. Each of the main and length codes is complete or empty.
struct block_codes {
    const std::uint8_t* main_lengths;
    unsigned main_symbols;
    const std::uint8_t* length_lengths;
    const std::uint8_t* aligned_table; ///< null in a verbatim block
    const std::uint8_t* aligned_lengths;
};

/// The fast loop's lookup tables for one block, wide enough that almost every symbol is one load.
struct fast_tables {
    static constexpr unsigned main_index_bits = 13;
    static constexpr unsigned length_index_bits = 10;
    static constexpr std::uint16_t long_code = 0xFFFF;

    /// Answers false if there are no main symbols, and nothing can be read.
    bool build(const block_codes& codes);

    entry::type main[1u << main_index_bits];
    std::uint16_t length[1u << length_index_bits]; ///< code length << 8 | symbol, or long_code
    /// By the 7 bits behind the footer, and 128 more for an entry that an aligned offset symbol follows: what
    /// to add to the entry, the symbol and, in place of entry::aligned, the bits of its code. The first 128
    /// are 0, so that no symbol is no branch.
    entry::token aligned[2u << aligned_bits] = {};
    code_order<maximum_main_symbols> main_order;
    code_order<length_symbols> length_order;

private:
    void fill_length();
    template<bool Aligned>
    void fill_main();
    void fill_aligned(const std::uint8_t* symbols, const std::uint8_t* lengths);
};

} // namespace algorithm::lzx

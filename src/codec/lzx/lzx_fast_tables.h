#pragma once

#include "codec/canonical_code.h"
#include "codec/lzx/lzx_tables.h"

#include <array>
#include <cstdint>

namespace algorithm::lzx {

// An entry of the fast loop's main table is a literal or a match, made so that reading treats both alike and
// needs no branch to tell them apart.
//
//   bits  0-7   literal: the byte           match: length of the code
//         8-13  length of code and footer, less the footer bits that an aligned offset symbol replaces; an
//               entry with bits 8-15 all 0 is special, see below
//        14     an aligned offset symbol follows and replaces the last 3 bits of the footer
//        16-21  match: slot
//        22-30  match: length
//        31     match
//
// A token is an entry with the bits that follow its code in the input:
//
//         8-15  length of the whole token
//        32-34  the aligned offset symbol
//        40-63  match: the bits behind the code
//
// A special entry doesn't describe the whole symbol. If its code length is 0, the code is longer than the
// table's index; otherwise it is the code of a match of that slot, and a length symbol follows.
namespace entry {

using type = std::uint32_t;
using token = std::uint64_t;

/// Limits a shift count. Processors that do so themselves need no instruction for it.
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
    const bool with_symbol = in_aligned && extra >= aligned_footer_bits;
    return 1u << match_shift | length << length_shift | slot << slot_shift |
           (with_symbol ? code + extra - aligned_footer_bits + aligned : code + extra) << size_shift | code;
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

/// The symbols of a prefix code in the order of their codes, to find the codes that are too long for a table.
template<unsigned Symbols>
struct code_order {
    /// Takes the `count` code lengths of a complete code, or of none, with all lengths 0.
    void sort(const std::uint8_t* lengths, unsigned count) {
        const codec::canonical_code<maximum_code_length> code(lengths, count);
        end = code.end;
        first[0] = 0;
        for (unsigned l = 0; l <= maximum_code_length; ++l)
            first[l + 1] = static_cast<std::uint16_t>(first[l] + code.symbols[l]);
        for (unsigned l = 1; l <= maximum_code_length; ++l)
            offset[l] =
                static_cast<int>(first[l]) - static_cast<int>(end[l - 1] >> (maximum_code_length - l));
        auto next_index = first;
        // Symbols without a code too: a branch on the length would be hard to predict.
        for (unsigned symbol = 0; symbol < count; ++symbol)
            symbols[next_index[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }

    /// Whether no symbol has a code.
    bool empty() const { return first[1] == first[maximum_code_length + 1]; }

    /// The symbol of the code, longer than `shorter` bits, that begins the 16 bits of `code`; sets `size` to
    /// that code's length.
    unsigned find_longer(std::uint32_t code, unsigned shorter, unsigned& size) const {
        for (size = shorter + 1; size < maximum_code_length && code >= end[size];)
            ++size;
        return symbols[offset[size] + static_cast<int>(code >> (maximum_code_length - size))];
    }

    /// The index of the first symbol of each code length.
    std::array<std::uint16_t, maximum_code_length + 2> first;
    std::uint16_t symbols[Symbols];                         ///< those without a code come first
    std::int32_t offset[maximum_code_length + 1];           ///< from codes to indexes
    std::array<std::uint32_t, maximum_code_length + 1> end; ///< the first left-aligned code that is longer
};

/// The codes of a verbatim or aligned offset block. The main and the length code are each complete or empty.
struct block_codes {
    const std::uint8_t* main_lengths;
    unsigned main_symbols; ///< how many lengths there are
    const std::uint8_t* length_lengths;
    const std::uint8_t* aligned_table; ///< null in a verbatim block
    const std::uint8_t* aligned_lengths;
};

/// The fast loop's lookup tables for one block, wide enough that almost every symbol takes one load. build()
/// copies what it needs of the codes.
struct fast_tables {
    static constexpr unsigned main_index_bits = 13;
    static constexpr unsigned length_index_bits = 10;
    static constexpr std::uint16_t long_code = 0xFFFF;

    /// Returns false if the main code is empty, so that no symbol can be decoded.
    bool build(const block_codes& codes);

    entry::type main[1u << main_index_bits];
    std::uint16_t length[1u << length_index_bits]; ///< code length << 8 | symbol, or long_code
    /// Indexed by the 7 bits behind the footer, plus 128 if an aligned offset symbol follows: what to add to
    /// the entry, namely the symbol and, in place of entry::aligned, the length of its code. The first 128
    /// are 0, so that the case without a symbol needs no branch.
    entry::token aligned[2u << aligned_table_bits] = {};
    code_order<maximum_main_symbols> main_order;
    code_order<length_symbols> length_order;

private:
    void fill_length();
    template<bool Aligned>
    void fill_main();
    void fill_aligned(const std::uint8_t* symbols, const std::uint8_t* lengths);
};

} // namespace algorithm::lzx

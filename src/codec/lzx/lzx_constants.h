#pragma once

#include <array>
#include <cstdint>

/// The numbers of the LZX format as cabinets use it, each named once.
namespace algorithm::lzx {

// Block types.
inline constexpr std::uint32_t verbatim_block = 1;
inline constexpr std::uint32_t aligned_block = 2;
inline constexpr std::uint32_t raw_block = 3;

/// Window sizes are powers of two up to this.
inline constexpr std::uint32_t largest_window = 1u << 21;

// Symbols of the trees. A main symbol is a literal or, above those, a position slot and a length header.
inline constexpr unsigned literal_symbols = 256;
inline constexpr unsigned headers_per_slot = 8;
inline constexpr unsigned maximum_slots = 50;
inline constexpr unsigned maximum_main_symbols = literal_symbols + headers_per_slot * maximum_slots;
inline constexpr unsigned length_symbols = 249;
inline constexpr unsigned aligned_symbols = 8;
inline constexpr unsigned pre_symbols = 20;

inline constexpr unsigned maximum_code_length = 16;

// A length header is a match's length less the minimum, up to the one that announces a length symbol.
inline constexpr unsigned minimum_match = 2;
inline constexpr unsigned longest_match = 257;
inline constexpr unsigned long_header = 7;

// Pre-tree symbols: up to 16 the change of one length, modulo 17, then three kinds of runs.
inline constexpr unsigned length_modulus = maximum_code_length + 1;
inline constexpr unsigned zeros_run = 17;      ///< 4 bits follow, of a run of 4 or more zeros
inline constexpr unsigned long_zeros_run = 18; ///< 5 bits follow, of a run of 20 or more zeros
inline constexpr unsigned same_run = 19;       ///< 1 bit, of a run of 4 or 5, and the change follow

/// Footer bits of an offset that an aligned offset symbol replaces, if the slot has so many.
inline constexpr unsigned aligned_footer_bits = 3;

/// The most footer bits that a position slot has.
inline constexpr unsigned longest_footer = 17;

/// Footer bits of a position slot. Slots 0 to 2 are the repeated offsets, 3 is the offset 1.
constexpr unsigned extra_bits(unsigned slot) {
    return slot < 4 ? 0 : slot < 36 ? (slot - 2) / 2 : longest_footer;
}

/// The match offset that a slot's footer is added to.
inline constexpr std::array<std::uint32_t, maximum_slots + 1> slot_bases = [] {
    std::array<std::uint32_t, maximum_slots + 1> bases{0, 0, 0, 1, 2};
    for (unsigned slot = 4; slot < maximum_slots; ++slot)
        bases[slot + 1] = bases[slot] + (1u << extra_bits(slot));
    return bases;
}();
static_assert(slot_bases[maximum_slots] == 2097150);

} // namespace algorithm::lzx

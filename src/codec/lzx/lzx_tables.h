#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace algorithm::lzx {

// The numbers of the format, and the lookup tables of its prefix codes.

constexpr std::uint32_t verbatim_block = 1;
constexpr std::uint32_t aligned_block = 2;
constexpr std::uint32_t raw_block = 3;

constexpr unsigned literal_symbols = 256;
constexpr unsigned headers_per_slot = 8;
constexpr unsigned maximum_slots = 50;
constexpr unsigned maximum_main_symbols = literal_symbols + headers_per_slot * maximum_slots;
constexpr unsigned length_symbols = 249;
constexpr unsigned aligned_symbols = 8;
constexpr unsigned pre_symbols = 20;

constexpr unsigned maximum_code_length = 16;
constexpr unsigned main_bits = 10;
constexpr unsigned length_bits = 8;
constexpr unsigned pre_bits = 8;
constexpr unsigned aligned_bits = 7;

constexpr unsigned minimum_match = 2;
constexpr unsigned longest_match = 257;
constexpr unsigned long_header = 7; ///< a symbol of the length tree follows

/// Footer bits of a position slot. Slots 0 to 2 are the repeated offsets, 3 is the offset 1.
constexpr unsigned extra_bits(unsigned slot) {
    return slot < 4 ? 0 : slot < 36 ? (slot - 2) / 2 : 17;
}

/// The match offset that a slot's footer counts from.
constexpr std::array<std::uint32_t, maximum_slots + 1> slot_bases = [] {
    std::array<std::uint32_t, maximum_slots + 1> bases{0, 0, 0, 1, 2};
    for (unsigned slot = 4; slot < maximum_slots; ++slot)
        bases[slot + 1] = bases[slot] + (1u << extra_bits(slot));
    return bases;
}();
static_assert(slot_bases[maximum_slots] == 2097150);

/// Slots that a window of `window_size` bytes uses.
unsigned count_slots(std::uint32_t window_size);

/// An inner node of a code tree below its table. A link below 0 is the negated number of a further node, any
/// other one is a symbol.
struct tree_links {
    std::int16_t left;
    std::int16_t right;
};

/// Whether these lengths make a code that build_table takes: a complete one or none at all.
bool is_buildable(const std::uint8_t* lengths, unsigned count);

/// Fills `table`, of 2 to the power `bits` entries, for the canonical code with these lengths; longer codes
/// go on in `links`, which has room for 2 x `count` nodes. No code at all gives a table of zeros. Answers
/// false if the code is incomplete or over-full.
bool build_table(const std::uint8_t* lengths, unsigned count, unsigned bits, std::int16_t* table,
                 tree_links* links);

/// The same for the eight aligned offset symbols and 7 bits, in 16-bit arithmetic: a code that is over-full
/// by a whole multiple passes if its entries stay inside the table.
bool build_aligned_table(const std::uint8_t* lengths, std::uint8_t* table);

} // namespace algorithm::lzx

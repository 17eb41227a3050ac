#pragma once

#include "codec/lzx/lzx_constants.h"

#include <cstdint>

/// The exact loop's lookup tables for canonical prefix codes. The caller owns all arrays; nothing here keeps
/// state, so any thread may call.
namespace algorithm::lzx {

// The number of code bits that index each table. Longer codes continue in links.
inline constexpr unsigned main_table_bits = 10;
inline constexpr unsigned length_table_bits = 8;
inline constexpr unsigned pre_table_bits = 8;
inline constexpr unsigned aligned_table_bits = 7; ///< no code is longer

/// The number of position slots that a window of `window_size` bytes uses.
unsigned count_slots(std::uint32_t window_size);

/// An inner node of a code tree below its table. A link below 0 is the negated number of another node, any
/// other link is a symbol.
struct tree_links {
    std::int16_t left;
    std::int16_t right;
};

/// Whether build_table accepts these code lengths: a complete code, or no code at all.
bool is_buildable(const std::uint8_t* lengths, unsigned count);

/// Fills `table`, of 2 to the power `bits` entries, for the canonical code with these lengths, and `links`,
/// which has room for 2 x `count` nodes, for the codes of more than `bits` bits. No code at all results in a
/// table of zeros. Returns false, with the table unchanged, if the code is incomplete or over-full.
bool build_table(const std::uint8_t* lengths, unsigned count, unsigned bits, std::int16_t* table,
                 tree_links* links);

/// The same for the eight aligned offset symbols and 7 bits, computed modulo the code space: a code that is
/// over-full by a whole multiple is accepted if its entries stay inside the table.
bool build_aligned_table(const std::uint8_t* lengths, std::uint8_t* table);

} // namespace algorithm::lzx

#pragma once

#include "codec/deflate/deflate_constants.h"

#include <span>

namespace deflate {

/// One canonical code. The owner enters `lengths` and calls build(); codes of up to 8 bits are then found by
/// one look-up and longer ones by comparing limits, in 15-bit values that hold a code left-justified.
class code_table {
public:
    /// `symbol_count` is at most 288.
    explicit code_table(unsigned symbol_count);

    /// Makes the code out of `lengths`. Raises basic::algorithm_exception for lengths that are no code: one
    /// above 15, code space overfilled, or filled neither wholly nor by half nor not at all. The half-filled
    /// form is what RFC 1951 gives a single distance code.
    void build();

    /// The length of the code that `value` begins with; 15 if it begins with none.
    unsigned length(std::uint32_t value) const;
    /// The symbol of the code of `length` bits that `value` begins with. Raises basic::algorithm_exception
    /// where `value` lies in the unused part of the code.
    std::uint32_t symbol(std::uint32_t value, unsigned length) const;

    /// Sets `used_count` and takes as many lengths; the rest become 0.
    void take(std::span<const std::uint8_t> used);

    std::array<std::uint32_t, longest_code + 1> limit;  ///< first 15-bit value behind each length's codes
    std::array<std::uint32_t, longest_code + 1> offset; ///< where each length's symbols start in `symbols`
    unsigned symbol_count;
    std::array<std::uint32_t, literal_symbols> symbols; ///< by length, then ascending
    std::array<std::uint8_t, 256> short_lengths;        ///< for the top 8 of the 15 bits
    std::array<std::uint8_t, literal_symbols> lengths;  ///< as read
    std::int32_t used_count = 0;                        ///< how many lengths the block gives
    bool flag = false; ///< literals: extended form; distances: the extent was given by the caller
};

} // namespace deflate

#pragma once

#include "codec/deflate/deflate_constants.h"

#include <span>

namespace deflate {

/// One canonical code. The owner sets `lengths` and calls build(). Then length() and symbol() decode, from
/// 15-bit values that hold a code left-justified: codes of up to 8 bits by one look-up, longer ones by
/// comparing limits. It owns all its arrays. Until build() has succeeded nothing may be decoded.
class code_table {
public:
    /// `symbol_count` is at most 288.
    explicit code_table(unsigned symbol_count);

    /// Builds the code from `lengths`. Raises basic::algorithm_exception "deflate codeword is too long" for a
    /// length above 15, "invalid deflate codeword size set" if the code space is overfilled, and "incomplete
    /// deflate codeword size set" if it is filled neither wholly, nor by half, nor not at all. RFC 1951 codes
    /// a single distance symbol by half of the space.
    void build();

    /// Returns the length of the code that `value` begins with, 15 if it begins with none.
    unsigned length(std::uint32_t value) const;
    /// Returns the symbol of the code of `length` bits that `value` begins with. Raises
    /// basic::algorithm_exception "too many deflate codewords" if `value` is in the unused part of the code.
    std::uint32_t symbol(std::uint32_t value, unsigned length) const;

    /// Copies `used` to `lengths`, sets the rest to 0 and `used_count` to the number of `used`.
    void assign(std::span<const std::uint8_t> used);

    std::array<std::uint32_t, longest_code + 1> limit;  ///< first 15-bit value behind each length's codes
    std::array<std::uint32_t, longest_code + 1> offset; ///< index of each length's first symbol in `symbols`
    unsigned symbol_count;
    std::array<std::uint32_t, literal_symbols> symbols; ///< by length, then ascending
    std::array<std::uint8_t, 256> short_lengths;        ///< for the top 8 of the 15 bits
    std::array<std::uint8_t, literal_symbols> lengths;  ///< as read
    std::int32_t used_count = 0;                        ///< number of lengths that assign() was given
    /// For the owner, which sets it: in the table of literals and lengths it means the extended form, in that
    /// of distances that the extent isn't stated in the input.
    bool flag = false;
};

} // namespace deflate

#pragma once

#include <array>
#include <cstdint>

namespace codec {

/// The ranges of a canonical prefix code, where codes are assigned by length and, within one length, by
/// symbol. Codes are left-aligned in `Longest` bits, so that they compare as numbers.
template<unsigned Longest>
struct canonical_code {
    /// Takes the code lengths of `count` symbols, none above `Longest`; 0 means that the symbol has no code.
    /// The lengths may describe a code that is incomplete or over-full.
    canonical_code(const std::uint8_t* lengths, unsigned count) {
        // Equal lengths follow one another, and counting in one place would wait for the count before.
        std::array<std::uint32_t, Longest + 1> others[3] = {};
        unsigned symbol = 0;
        for (; symbol + 4 <= count; symbol += 4) {
            ++symbols[lengths[symbol]];
            for (unsigned i = 0; i < 3; ++i)
                ++others[i][lengths[symbol + 1 + i]];
        }
        for (; symbol < count; ++symbol)
            ++symbols[lengths[symbol]];
        for (const auto& other : others)
            for (unsigned length = 0; length <= Longest; ++length)
                symbols[length] += other[length];
        for (unsigned length = 1; length <= Longest; ++length)
            end[length] = end[length - 1] + (symbols[length] << (Longest - length));
    }

    /// The first code of this length, from 1 to `Longest`.
    std::uint32_t begin(unsigned length) const { return end[length - 1]; }
    /// How much of the code space is used: 0 if no symbol has a code, 2 to the power `Longest` if the code is
    /// complete.
    std::uint32_t used() const { return end[Longest]; }

    std::array<std::uint32_t, Longest + 1> symbols{}; ///< number of symbols of each code length
    std::array<std::uint32_t, Longest + 1> end{};     ///< the first value behind the codes of each length
};

} // namespace codec

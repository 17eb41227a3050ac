#pragma once

#include <array>
#include <cstdint>

namespace deflate {

/// Each byte with its bits in the opposite order.
inline constexpr auto reversed_byte = [] {
    std::array<std::uint8_t, 256> table{};
    for (unsigned i = 1; i < 256; ++i)
        table[i] = static_cast<std::uint8_t>(table[i / 2] / 2 | (i % 2) << 7);
    return table;
}();

constexpr std::uint32_t reversed_word(std::uint32_t word) {
    return std::uint32_t{reversed_byte[word & 0xFF]} << 24 |
           std::uint32_t{reversed_byte[word >> 8 & 0xFF]} << 16 |
           std::uint32_t{reversed_byte[word >> 16 & 0xFF]} << 8 | reversed_byte[word >> 24];
}

} // namespace deflate

#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

// What the fast loop loads and moves bytes with.

namespace algorithm::lzx {

/// The first byte counts least.
inline std::uint64_t load_64(const std::uint8_t* from) {
    std::uint64_t value;
    std::memcpy(&value, from, 8);
    if constexpr (std::endian::native == std::endian::big)
        value = __builtin_bswap64(value);
    return value;
}

inline void move_8(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 8);
}

inline void move_16(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 16);
}

} // namespace algorithm::lzx

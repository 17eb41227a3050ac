#pragma once

// Little-endian integers in memory. A pointer may have any alignment and must have all the integer's bytes
// behind it. Each load compiles to one instruction on a little-endian machine.

#include <bit>
#include <cstdint>
#include <cstring>

namespace endian {

inline std::uint16_t load_le16(const void* bytes) {
    std::uint16_t value;
    std::memcpy(&value, bytes, sizeof value);
    return std::endian::native == std::endian::little ? value : __builtin_bswap16(value);
}

inline std::uint32_t load_le32(const void* bytes) {
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return std::endian::native == std::endian::little ? value : __builtin_bswap32(value);
}

inline std::uint64_t load_le64(const void* bytes) {
    std::uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return std::endian::native == std::endian::little ? value : __builtin_bswap64(value);
}

} // namespace endian

#pragma once

#include "codec/lzx_tables.h"

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// What the fast loop reads bits and moves bytes with.

namespace algorithm::lzx {

inline std::uint64_t load_64(const std::uint8_t* from) {
    std::uint64_t value;
    std::memcpy(&value, from, 8);
    return value;
}

inline void store_64(std::uint8_t* to, std::uint64_t value) {
    std::memcpy(to, &value, 8);
}

inline void move_16(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 16);
}

inline std::uint32_t word_at(const std::uint8_t* from) {
    return static_cast<std::uint32_t>(from[0] | from[1] << 8);
}

constexpr unsigned valid_bits = 64 - 15;

/// The bits from number `at` on, the first one at the top; `valid_bits` of them are good. Reads 8 bytes.
inline std::uint64_t bits_at(const std::uint8_t* words, std::uint64_t at) {
    const std::uint8_t* const from = words + (at >> 4) * 2;
#if defined(__SSE2__) && defined(__x86_64__)
    const __m128i four = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    const auto bits = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_shufflelo_epi16(four, 0x1B)));
#else
    const std::uint64_t bits = std::uint64_t{word_at(from)} << 48 | std::uint64_t{word_at(from + 2)} << 32 |
                               word_at(from + 4) << 16 | word_at(from + 6);
#endif
    return bits << (at & 15);
}

/// The symbol that `bits` begin with, found in the exact loop's tables.
inline unsigned walk(std::uint64_t bits, const std::int16_t* table, const tree_links* links,
                     unsigned index_bits) {
    int value = table[bits >> (64 - index_bits)];
    for (unsigned next = 63 - index_bits; value < 0; --next)
        value = bits >> next & 1 ? links[-value].right : links[-value].left;
    return static_cast<unsigned>(value);
}

} // namespace algorithm::lzx

#pragma once

#include <array>
#include <cstdint>

/// The numbers of the Deflate format (RFC 1951), and the table rows that this decoder adds for windows beyond
/// 32 KiB.
namespace deflate {

// Block types.
inline constexpr std::int32_t stored_block = 0;
inline constexpr std::int32_t fixed_block = 1;
inline constexpr std::int32_t dynamic_block = 2;

inline constexpr unsigned literal_symbols = 288;
inline constexpr unsigned distance_symbols = 50;
inline constexpr unsigned code_length_symbols = 19;

inline constexpr unsigned end_of_block = 256;
inline constexpr unsigned first_length_symbol = 257;
/// Symbols 286 and 287 are part of the fixed code but have no meaning.
inline constexpr unsigned length_rows = 29;
/// RFC 1951 defines 30 of the distance symbols; the fixed code has codes for 32.
inline constexpr unsigned plain_distance_rows = 30;

inline constexpr unsigned longest_code = 15;
inline constexpr unsigned code_space = 1u << longest_code;

inline constexpr unsigned longest_plain_match = 258;
/// The longest match of the extended form, where symbol 285 has 16 extra bits: the window is sized for it.
inline constexpr unsigned longest_extended_match = 65794;

inline constexpr std::array<std::uint8_t, code_length_symbols> code_length_order = {
    16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};

/// What a symbol with extra bits means: `base` plus the value of `extra` bits.
struct row {
    std::uint32_t base;
    std::uint32_t extra;
};

inline constexpr auto length_table = [] {
    std::array<row, length_rows> rows{};
    std::uint32_t base = 3;
    for (std::uint32_t i = 0; i < length_rows; ++i) {
        rows[i] = {base, i < 8 ? 0 : i / 4 - 1};
        base += 1u << rows[i].extra;
    }
    rows[length_rows - 1] = {longest_plain_match, 0};
    return rows;
}();

/// Symbols of the code length code below this are lengths; this and the two above it are runs.
inline constexpr unsigned repeat_last = 16;

/// The run lengths of those three symbols: one repeats the length before it, two repeat zeros.
inline constexpr std::array<row, code_length_symbols - repeat_last> repeat_rows = {{{3, 2}, {3, 3}, {11, 7}}};

/// Base and extra bits of each distance, less 1.
inline constexpr auto distance_rows = [] {
    std::array<row, distance_symbols> rows{};
    std::uint32_t base = 0;
    for (std::uint32_t i = 0; i < distance_symbols; ++i) {
        rows[i] = {base, i < 4 ? 0 : i / 2 - 1};
        base += 1u << rows[i].extra;
    }
    return rows;
}();

} // namespace deflate

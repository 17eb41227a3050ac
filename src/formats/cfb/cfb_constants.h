#pragma once

// The numbers of the compound document format ([MS-CFB]), each named once. Multi-byte numbers are
// little-endian on disk.

#include <cstdint>
#include <string_view>

namespace format::cfb {

inline constexpr std::string_view signature{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8};
inline constexpr std::uint16_t little_endian_mark = 0xFFFE;

inline constexpr unsigned header_size = 512;
/// Numbers of FAT sectors in the header; those of the others are in DIFAT sectors.
inline constexpr unsigned header_fat_numbers = 109;
inline constexpr unsigned header_fat_offset = header_size - 4 * header_fat_numbers;

/// Base-2 logarithms of sector sizes, by the major version 3 or 4, and of mini sectors.
inline constexpr unsigned sector_shift_3 = 9;
inline constexpr unsigned sector_shift_4 = 12;
inline constexpr unsigned mini_shift = 6;
inline constexpr unsigned mini_size = 1u << mini_shift;

/// Sector numbers above this one are no sectors but one of those below.
inline constexpr std::uint32_t last_sector = 0xFFFFFFFA;
inline constexpr std::uint32_t end_of_chain = 0xFFFFFFFE;
inline constexpr std::uint32_t free_sector = 0xFFFFFFFF;

/// Directory entries.
inline constexpr unsigned entry_size = 128;
inline constexpr unsigned longest_name = 32; ///< in UTF-16 units, with its terminating zero
inline constexpr std::uint32_t no_entry = 0xFFFFFFFF;

namespace entry_type {
inline constexpr unsigned storage = 1;
inline constexpr unsigned stream = 2;
inline constexpr unsigned root = 5;
} // namespace entry_type

/// Characters of packed names. Installer databases write two characters of the 64 in `packed_alphabet` as one
/// UTF-16 unit from `packed_pair` on, a single one as a unit from `packed_single` on, and put `table_mark` in
/// front of the names of tables.
inline constexpr char16_t packed_pair = 0x3800;
inline constexpr char16_t packed_single = 0x4800;
inline constexpr char16_t table_mark = 0x4840;
inline constexpr std::string_view packed_alphabet =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._";

} // namespace format::cfb

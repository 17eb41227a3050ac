#pragma once

// The numbers of the cabinet format, each named once. Multi-byte numbers are little-endian on disk.

#include <cstdint>
#include <string_view>

namespace format::cab {

inline constexpr std::string_view signature = "MSCF";
/// Major number in the high byte, minor in the low byte; the only version that is read.
inline constexpr std::uint16_t supported_version = 0x0103;
/// The one cabinet index that is refused.
inline constexpr std::uint16_t no_cabinet_index = 0xFFFF;

/// Bits of the archive header's flags.
namespace header_flag {
inline constexpr std::uint16_t previous = 0x0001;
inline constexpr std::uint16_t next = 0x0002;
inline constexpr std::uint16_t reserve = 0x0004;
} // namespace header_flag

/// Folder indexes of files that continue in another cabinet.
namespace continued {
inline constexpr std::uint16_t from_previous = 0xFFFD;
inline constexpr std::uint16_t to_next = 0xFFFE;
inline constexpr std::uint16_t both = 0xFFFF;
} // namespace continued

/// The compression word of a folder: the method in the low four bits and, for LZX only, the base-2 logarithm
/// of the window size in bits 8 to 12. The other bits are ignored.
namespace compression {
inline constexpr std::uint16_t method_mask = 0x000F;
inline constexpr std::uint16_t stored = 0;
inline constexpr std::uint16_t deflate = 1;
inline constexpr std::uint16_t quantum = 2;
inline constexpr std::uint16_t lzx = 3;
inline constexpr std::uint16_t invalid = 15;

inline constexpr unsigned window_shift = 8;
inline constexpr unsigned window_mask = 0x1F;
inline constexpr unsigned smallest_window = 15;
inline constexpr unsigned largest_window = 21;
} // namespace compression

/// The first two bytes of every Deflate block.
inline constexpr int deflate_mark_1 = 0x43;
inline constexpr int deflate_mark_2 = 0x4B;
/// Base-2 logarithm of the Deflate window size.
inline constexpr unsigned deflate_extent = 15;

} // namespace format::cab

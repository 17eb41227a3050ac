#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace format::cab {
class archive_header;
class file_header;
} // namespace format::cab

/// The rules of the published descriptions of the cabinet format that a plain expansion doesn't follow:
/// there, places and folder indexes of continued files are not looked at. docs/accepted.md lists them, with
/// those that concern LZX data and are carried out by its decoder.
namespace format::cab::published {

/// Bytes of a block's record in front of the payload, with the largest reserve area.
inline constexpr unsigned largest_block_head = 8 + 255;

/// The checksum of a block: that of the payload, and that of the fields between the checksum and the payload,
/// each filled up to whole words by itself.
std::uint32_t checksum_of(std::string_view payload, std::string_view fields);

/// Index of the folder that holds the file: folder 0 if the file comes from the previous cabinet, the last
/// one if it goes on in the next. None if the cabinet has no such folder, or no such neighbour.
std::optional<std::size_t> folder_of(const file_header& file, const archive_header& header);

/// Whether the file's folder begins in an earlier cabinet, or goes on in a later one.
bool comes_from_previous(const file_header& file);
bool goes_on_in_next(const file_header& file);

/// Whether records or data can begin at `offset` of a cabinet whose header and folder records have `head`
/// bytes, and which has `size` bytes.
bool is_place(std::uint64_t offset, std::uint64_t head, std::uint64_t size);

/// Whether a block is one piece of a block that goes on in the next cabinet: the last block here of a folder
/// that goes on there, without an uncompressed size.
bool is_piece(std::uint64_t uncompressed_size, bool last_of_spanning_folder);

} // namespace format::cab::published

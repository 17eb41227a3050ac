#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// A small language to build cabinets, sound and unsound ones.
//
//     cabinet().file("hello.txt", "hello\n").bytes()                  a sound cabinet with one stored folder
//     cabinet().folder(mszip).file("a\\b.txt", text).bytes()          compressed for real, history included
//     cabinet().block({.payload = "abc", .checksum = 1}).bytes()      a block with a wrong checksum
//     cut(whole, 40), flip(whole, 40)                                 damage afterwards
//
// The fields that readers look at can be set. A field of type std::optional that is empty gets the value that
// belongs there, so only what a test is about needs to be said:
//
//     cabinet wrong;
//     wrong.header.version = 0x0104;
//     wrong.file("a", "some bytes").folders.back().block_count = 7;

namespace support {

constexpr std::uint16_t stored = 0;
constexpr std::uint16_t mszip = 1;
constexpr std::uint16_t quantum = 2;
/// The compression word of LZX with a window of 2 to the power `bits`.
constexpr std::uint16_t lzx(unsigned bits) {
    return static_cast<std::uint16_t>(bits << 8 | 3);
}

/// Reserve areas: the bytes behind the header, and the size of those in the other records.
struct reserve_area {
    std::string header{};
    std::uint8_t folder_size = 0;
    std::uint8_t data_size = 0;
    std::optional<std::uint16_t> header_size{};
};

/// Names of a neighbouring cabinet and its disk, without their zero bytes.
struct neighbour {
    std::string cabinet{};
    std::string disk{};
};

struct header_record {
    std::string signature = "MSCF";
    std::optional<std::uint32_t> checksum = 0; ///< none by default; empty means a right one
    std::uint16_t version = 0x0103;
    std::optional<std::uint16_t> folder_count{};
    std::uint16_t flags = 0; ///< added to those that `reserve`, `previous` and `next` call for
    std::uint16_t cabinet_index = 0;
    std::optional<reserve_area> reserve{};
    std::optional<neighbour> previous{};
    std::optional<neighbour> next{};
};

struct block_record {
    std::string payload{};
    std::optional<std::uint32_t> checksum{};          ///< 0 for none, empty for a right one
    std::optional<std::uint16_t> uncompressed_size{}; ///< empty: as many bytes as `payload` has
    std::string reserve{}; ///< cut or filled up with zeros to the size that is called for
};

struct folder_record {
    std::uint16_t compression = stored;
    std::optional<std::uint16_t> block_count{};
    /// What the files of the folder hold; cut into blocks of `block_size`. MSZIP compresses them, any other
    /// method keeps the bytes as they are.
    std::string content{};
    unsigned block_size = 32768;
    bool checksums = true;
    std::deque<block_record> blocks{}; ///< made by hand; they follow those of `content`
};

struct file_record {
    std::string name{};
    std::uint32_t size = 0;
    std::uint32_t folder_offset = 0;
    std::uint16_t folder_index = 0;
    std::uint16_t date = 0x305D; ///< 29 February 2004
    std::uint16_t time = 0x6CB5; ///< 13:37:42
    std::uint16_t attributes = 0x20;
    bool terminated = true; ///< whether a zero byte ends the name
};

/// One record as it stands in a cabinet; `reserve_size` bytes of reserve.
std::string bytes_of(const file_record& file);
std::string bytes_of(const block_record& block, unsigned reserve_size = 0);

struct cabinet {
    /// Begins a folder; the files and blocks that follow go into it. Without it there is one stored folder.
    cabinet& folder(std::uint16_t compression);
    /// Adds `content` to the last folder and a record that fits it.
    cabinet& file(const std::string& name, std::string_view content);
    /// Adds the record alone.
    cabinet& file(const file_record& record);
    /// Adds a block to the last folder.
    cabinet& block(const block_record& record);

    std::string bytes() const;
    /// The header record alone, with reserve and names; it states the sizes of the whole cabinet.
    std::string header_bytes() const;

    header_record header;
    std::deque<folder_record> folders{};
    std::deque<file_record> files{};
};

std::string cut(std::string bytes, std::size_t length);
/// With the bits of `mask` turned over in the byte at `place`.
std::string flip(std::string bytes, std::size_t place, int mask = 0xFF);

/// MSZIP payloads ("CK" and a Deflate stream), each with the blocks before it as history. For one folder.
std::function<std::string(std::string_view)> mszip_encoder(int level = 6);

} // namespace support

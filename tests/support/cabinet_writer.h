#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

// Builds cabinets, valid and damaged ones.
//
//     cabinet().file("hello.txt", "hello\n").bytes()                  a valid cabinet with one stored folder
//     cabinet().folder(mszip).file("a\\b.txt", text).bytes()          compressed, with history
//     cabinet().block({.payload = "abc", .checksum = 1}).bytes()      a block with a wrong checksum
//     cut(whole, 40), flip(whole, 40)                                 damage afterwards
//
// Every field that readers use can be set. An empty std::optional means the correct value, so a test
// sets only what it is about:
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

/// Reserve areas: the header's bytes, and the sizes of those in folder and data records.
struct reserve_area {
    std::string header{};
    std::uint8_t folder_size = 0;
    std::uint8_t data_size = 0;
    std::optional<std::uint16_t> header_size{};
};

/// Names of a neighbouring cabinet and its disk, without terminating zeros.
struct neighbour {
    std::string cabinet{};
    std::string disk{};
};

struct header_record {
    std::string signature = "MSCF";
    std::optional<std::uint32_t> checksum = 0; ///< 0 for none, empty for the correct one
    std::uint16_t version = 0x0103;
    std::optional<std::uint16_t> folder_count{};
    std::uint16_t flags = 0; ///< added to those that follow from `reserve`, `previous` and `next`
    std::uint16_t cabinet_index = 0;
    std::optional<reserve_area> reserve{};
    std::optional<neighbour> previous{};
    std::optional<neighbour> next{};
};

struct block_record {
    std::string payload{};
    std::optional<std::uint32_t> checksum{};          ///< 0 for none, empty for the correct one
    std::optional<std::uint16_t> uncompressed_size{}; ///< empty: as many bytes as `payload` has
    std::string reserve{};                            ///< cut or padded with zeros to reserve_area::data_size
};

struct folder_record {
    std::uint16_t compression = stored;
    std::optional<std::uint16_t> block_count{};
    /// The content of the folder's files, cut into blocks of `block_size`. MSZIP compresses them; with any
    /// other method the payload is the content.
    std::string content{};
    unsigned block_size = 32768;
    bool checksums = true;
    std::deque<block_record> blocks{}; ///< additional ones, after those of `content`
};

struct file_record {
    std::string name{};
    std::uint32_t size = 0;
    std::optional<std::uint32_t> folder_offset{}; ///< empty: behind the records added before it to the folder
    std::uint16_t folder_index = 0;
    std::uint16_t date = 0x305D; ///< 29 February 2004
    std::uint16_t time = 0x6CB5; ///< 13:37:42
    std::uint16_t attributes = 0x20;
    bool terminated = true; ///< whether a zero byte ends the name
};

/// The bytes of one record; the block's has `reserve_size` bytes of reserve.
std::string bytes_of(const file_record& file);
std::string bytes_of(const block_record& block, unsigned reserve_size = 0);

struct cabinet {
    /// Begins a folder, to which the following files and blocks belong. The default is one stored folder.
    cabinet& folder(std::uint16_t compression) {
        return folders.emplace_back().compression = compression, *this;
    }
    /// Adds `content` to the last folder, and the file record for it.
    cabinet& file(const std::string& name, std::string_view content);
    /// Adds the record without content.
    cabinet& file(const file_record& record);
    /// Adds a block to the last folder.
    cabinet& block(const block_record& record) { return last_folder().blocks.push_back(record), *this; }

    std::string bytes() const;
    /// The header record alone, with reserve and names; it states the sizes of the whole cabinet.
    std::string header_bytes() const;

    header_record header;
    std::deque<folder_record> folders{};
    std::deque<file_record> files{};

private:
    folder_record& last_folder() { return folders.empty() ? folders.emplace_back() : folders.back(); }
};

std::string cut(std::string bytes, std::size_t length);
/// `bytes` with the bits of `mask` inverted in the byte at `place`.
std::string flip(std::string bytes, std::size_t place, int mask = 0xFF);

/// MSZIP payloads ("CK" and a Deflate stream), each with the blocks before it as history. For one folder.
std::function<std::string(std::string_view)> mszip_encoder(int level = 6);

} // namespace support

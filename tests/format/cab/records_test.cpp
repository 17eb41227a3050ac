#include "format/cab/archive_header.h"
#include "format/cab/data_header.h"
#include "format/cab/file_header.h"
#include "format/cab/folder_header.h"
#include "support/cabinet_writer.h"
#include "support/memory_streams.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using format::cab::data_header;
using format::cab::file_header;
using support::bytes_of;
using support::memory_input;

TEST(FileHeader, ReadsFieldsAndNames) {
    memory_input input(bytes_of({.name = "a\\b/\xFF\\c",
                                 .size = 0xFFFFFFFE,
                                 .folder_offset = 0x80000001,
                                 .folder_index = 0xFFFD,
                                 .attributes = 0x21}) +
                       bytes_of({.name = "", .folder_index = 0xFFFE}) +
                       bytes_of({.name = "end", .folder_index = 0xFFFF, .terminated = false}));
    file_header file;
    EXPECT_EQ(file.read(input, true), 24u);
    EXPECT_EQ(file.size, 0xFFFFFFFEu);
    EXPECT_EQ(file.folder_offset, 0x80000001u);
    EXPECT_TRUE(file.continued_from_previous && !file.continued_to_next && !file.continued_both);
    EXPECT_TRUE(file.attributes.read_only && file.attributes.archive && !file.attributes.utf8_name);
    EXPECT_EQ(file.name, "a/b/\u00FF/c");
    fs::time leap_day;
    leap_day.set_dos(0x305D, 0x6CB5);
    EXPECT_EQ(file.time, leap_day);
    EXPECT_EQ(file.read(input, true), 17u);
    EXPECT_TRUE(!file.continued_from_previous && file.continued_to_next && !file.continued_both);
    EXPECT_EQ(file.name, "");
    EXPECT_EQ(file.read(input, true), 19u);
    EXPECT_TRUE(!file.continued_from_previous && !file.continued_to_next && file.continued_both);
    EXPECT_EQ(file.name, "end");
    EXPECT_EQ(support::refusal_of([&] { file.read(input, true); }),
              "stream::little_endian_input: unexpected end of stream");
}

TEST(FolderHeader, PassesOverItsReserve) {
    const std::string record("\x78\x56\x34\x92\xCD\xAB\x03\x15", 8);
    format::cab::reserved_header reserve;
    reserve.folder_size = 3;
    format::cab::folder_header folder;
    memory_input input(record + "abc" + record + "ab");
    folder.reserve = &reserve;
    EXPECT_EQ(folder.read(input, true), 11u);
    EXPECT_EQ(folder.data_offset, 0x92345678u);
    EXPECT_EQ(folder.block_count, 0xABCDu);
    EXPECT_EQ(folder.compression, 0x1503);
    EXPECT_EQ(support::refusal_of([&] { folder.read(input, true); }),
              "format::cab::folder_header: unexpected end of input stream");
    memory_input lenient(record + "ab");
    EXPECT_EQ(folder.read(lenient, false), 10u);
}

TEST(DataHeader, TestsEveryByteBehindTheChecksumAndHandsThePayloadBack) {
    format::cab::reserved_header reserve;
    data_header block; // one object, as in a folder
    block.reserve = &reserve;
    for (const unsigned reserve_size : {0u, 1u, 2u, 3u, 4u, 255u}) {
        reserve.data_size = reserve_size;
        for (const std::size_t size : {0u, 1u, 2u, 3u, 4u, 5u, 70u, 32768u, 65535u}) {
            std::string payload(size, '\0');
            for (std::size_t i = 0; i < size; ++i)
                payload[i] = static_cast<char>(i * 7 + size);
            const auto bytes =
                bytes_of({.payload = payload, .uncompressed_size = std::uint16_t{9}, .reserve = "reserved"},
                         reserve_size);
            memory_input input(bytes);
            ASSERT_EQ(block.read(input, true), 8 + reserve_size);
            ASSERT_EQ(block.compressed_size, size);
            ASSERT_EQ(block.uncompressed_size, 9u);
            ASSERT_EQ(input.rest(), payload);
            ASSERT_EQ(std::string(block.payload.get(), size), payload);
            for (const std::size_t place : {std::size_t{6}, bytes.size() / 2, bytes.size() - 1}) {
                memory_input damaged(support::flip(bytes, std::max<std::size_t>(place, 6), 0x40));
                ASSERT_EQ(support::refusal_of([&] { block.read(damaged, true); }),
                          "crc format::cab::data_header: CRC mismatch, data is invalid")
                    << reserve_size << ' ' << size << ' ' << place;
            }
        }
    }
}

TEST(DataHeader, FillsUpWhatTheStreamDoesntHold) {
    memory_input full(bytes_of({.payload = std::string(11, 'x'), .checksum = 0}));
    memory_input cut(support::cut(bytes_of({.payload = "abcdefghijk", .checksum = 0}), 13));
    data_header block;
    block.read(full, true);
    EXPECT_FALSE(block.is_valid());
    EXPECT_EQ(block.read(cut, true), 13u - 11u);
    EXPECT_EQ(cut.rest(), std::string("abcde\0\0\0\0\0\0", 11));

    format::cab::reserved_header reserve;
    reserve.data_size = 5;
    block.reserve = &reserve;
    memory_input short_reserve(support::cut(bytes_of({.payload = "", .checksum = 0}, 5), 12));
    EXPECT_EQ(support::refusal_of([&] { block.read(short_reserve, true); }),
              "format::cab::data_header: unexpected end of input stream");
}

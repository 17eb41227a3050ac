#include "formats/cab/cab_checksum.h"
#include "formats/cab/cab_records.h"
#include "support/cabinet_writer.h"
#include "support/memory_streams.h"
#include "support/refusal.h"
#include "support/zlib_streams.h"

#include <gtest/gtest.h>

using format::cab::archive_header;
using format::cab::data_header;
using format::cab::file_header;
using support::bytes_of;
using support::cabinet;
using support::memory_input;

namespace {

std::string refusal_of_header(const std::string& bytes, bool verify = true) {
    memory_input input(bytes);
    archive_header header;
    return support::refusal_of([&] { header.read(input, verify); });
}

} // namespace

TEST(ArchiveHeader, RefusesWithExactWordsAndInOrder) {
    const std::string reporter = "format::cab::archive_header: ";
    const struct {
        std::function<void(support::header_record&)> set;
        const char* refusal;
    } cases[] = {
        {[](auto&) {}, ""},
        {[](auto& h) { h.signature = "MSCf"; }, "bad header artifact"},
        {[](auto& h) { h.version = 0x0102; }, "unsupported cabinet version"},
        {[](auto& h) { h.version = 0x0104; }, "unsupported cabinet version"},
        {[](auto& h) { h.cabinet_index = 0xFFFF; }, "invalid cabinet index"},
        {[](auto& h) { h.cabinet_index = 0xFFFE; }, ""},
        {[](auto& h) { h.checksum = 1; }, "archive header CRC error"},
        {[](auto& h) { h.checksum.reset(); }, ""},
        {[](auto& h) { h.flags = 0xFFF8; }, ""},
        {[](auto& h) { h.signature = "MSCf", h.version = 0, h.cabinet_index = 0xFFFF, h.checksum = 1; },
         "bad header artifact"},
        {[](auto& h) { h.version = 0, h.cabinet_index = 0xFFFF, h.checksum = 1; },
         "unsupported cabinet version"},
        {[](auto& h) { h.cabinet_index = 0xFFFF, h.checksum = 1; }, "invalid cabinet index"},
    };
    for (const auto& c : cases) {
        cabinet made;
        c.set(made.header);
        EXPECT_EQ(refusal_of_header(made.bytes()), *c.refusal ? reporter + c.refusal : "") << c.refusal;
        EXPECT_EQ(refusal_of_header(made.bytes(), false), "") << c.refusal;
    }
    const auto whole = cabinet().bytes();
    for (unsigned length = 0; length < 36; ++length)
        EXPECT_EQ(refusal_of_header(support::cut(whole, length)),
                  length < 4 ? reporter + "bad header artifact"
                             : "stream::little_endian_input: unexpected end of stream")
            << length;
}

TEST(ArchiveHeader, ReadsEveryFieldAndKeepsNamesWhenReadAgain) {
    cabinet names;
    names.header.reserve = support::reserve_area{"kept for me", 255, 254, {}};
    names.header.previous = support::neighbour{"\xE9t\xE9.cab", "disk \xE9"};
    names.header.next = support::neighbour{std::string(300, 'n'), ""};
    const std::string fixed("MSCF\0\0\0\0\x98\xBA\xDC\xFE\x11\x11\x11\x11\xEF\xCD\xAB\x89\x22\x22\x22\x22"
                            "\x03\x01\xCD\xAB\xBA\xDC\x07\x00\x34\x12\x07\x00",
                            36);
    const auto bytes = fixed + names.header_bytes().substr(36);
    memory_input input("x" + bytes + "behind");
    input.skip(1);

    archive_header header;
    EXPECT_EQ(header.read(input, true), bytes.size());
    EXPECT_EQ(input.mark, 1u);
    EXPECT_EQ(input.rest(), "behind");
    EXPECT_TRUE(header.is_valid());
    EXPECT_EQ(
        std::tuple(header.cabinet_size, header.reserved_word_1, header.files_offset, header.reserved_word_2),
        std::tuple(0xFEDCBA98u, 0x11111111u, 0x89ABCDEFu, 0x22222222u));
    EXPECT_EQ(
        std::tuple(header.folder_count, header.file_count, header.flags, header.set_id, header.cabinet_index),
        std::tuple(0xABCDu, 0xDCBAu, 7, 0x1234, 7));
    const auto& reserve = header.reserve.value;
    EXPECT_EQ(std::tuple(reserve.header_size, reserve.folder_size, reserve.data_size),
              std::tuple(11u, 255u, 254u));
    EXPECT_EQ(header.previous_cabinet.value, "\u00E9t\u00E9.cab");
    EXPECT_EQ(header.previous_disk.value, "disk \xE9");
    EXPECT_EQ(header.next_cabinet.value, std::string(300, 'n'));
    EXPECT_TRUE(header.next_disk.present);

    memory_input plain(cabinet().bytes());
    EXPECT_EQ(header.read(plain, true), 36u);
    EXPECT_FALSE(header.has_previous || header.has_next || header.has_reserve || header.reserve.present);
    EXPECT_EQ(reserve.folder_size + reserve.data_size, 0u);
    EXPECT_EQ(header.previous_disk.value, "disk \xE9");
}

TEST(ArchiveHeader, EndsWithTheStreamInsideReserveAndNames) {
    cabinet made;
    made.header.previous = support::neighbour{"p.cab", "disk"};
    const auto short_name = support::cut(made.header_bytes(), 39);
    made.header.reserve = support::reserve_area{"abc", 1, 2, 60000};
    for (const auto& bytes : {made.header_bytes(), short_name}) {
        memory_input input(bytes);
        archive_header header;
        EXPECT_EQ(header.read(input, true), bytes.size());
        EXPECT_EQ(header.previous_cabinet.value, bytes == short_name ? "p.c" : "");
    }
}

TEST(FileHeader, ReadsFieldsAndNames) {
    memory_input input(bytes_of({.name = "a\\b/\xFF\\c",
                                 .size = 0xFFFFFFFE,
                                 .folder_offset = 0x80000001,
                                 .folder_index = 0xFFFD,
                                 .attributes = 0x21}) +
                       bytes_of({.name = "", .folder_index = 0xFFFE}) +
                       bytes_of({.name = "end", .folder_index = 0xFFFF, .terminated = false}));
    file_header file;
    const auto continued = [&] {
        return std::tuple(file.continued_from_previous, file.continued_to_next, file.continued_both);
    };
    EXPECT_EQ(file.read(input, true), 24u);
    EXPECT_EQ(std::pair(file.size, file.folder_offset),
              (std::pair<std::uint64_t, std::uint64_t>(0xFFFFFFFE, 0x80000001)));
    EXPECT_EQ(continued(), std::tuple(true, false, false));
    EXPECT_TRUE(file.attributes.read_only && file.attributes.archive && !file.attributes.utf8_name);
    EXPECT_EQ(file.name, "a/b/\u00FF/c");
    EXPECT_EQ(file.read(input, true), 17u);
    EXPECT_EQ(continued(), std::tuple(false, true, false));
    EXPECT_EQ(file.name, "");
    EXPECT_EQ(file.read(input, true), 19u);
    EXPECT_EQ(continued(), std::tuple(false, false, true));
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
    EXPECT_EQ(std::tuple(folder.data_offset, folder.block_count, folder.compression),
              std::tuple(0x92345678u, 0xABCDu, 0x1503));
    EXPECT_EQ(support::refusal_of([&] { folder.read(input, true); }),
              "format::cab::folder_header: unexpected end of input stream");
}

TEST(Checksum, IsTheSameForARunAsByteByByteFromAnyShiftAndAddress) {
    const auto bytes = zlib_streams::noise(310);
    for (unsigned place = 0; place < 4 * 9; ++place)
        for (unsigned length = 0; length < 300; ++length) {
            format::cab::checksum run, single;
            run.shift = single.shift = place % 4 * 8;
            run.update(bytes.data() + place / 4, length);
            for (unsigned i = 0; i < length; ++i)
                single.update(bytes[place / 4 + i]);
            ASSERT_EQ(std::pair(run.value, run.shift), std::pair(single.value, single.shift)) << length;
        }
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

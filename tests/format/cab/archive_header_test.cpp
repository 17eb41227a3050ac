#include "format/cab/archive_header.h"
#include "support/cabinet_writer.h"
#include "support/memory_streams.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using format::cab::archive_header;
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
    cabinet with_both;
    with_both.header.reserve = support::reserve_area{"abc", 1, 2, 60000};
    with_both.header.previous = support::neighbour{"p.cab", "disk"};
    memory_input short_reserve(with_both.header_bytes());
    archive_header header;
    EXPECT_EQ(header.read(short_reserve, true), with_both.header_bytes().size());
    EXPECT_EQ(header.previous_cabinet.value, "");

    with_both.header.reserve.reset();
    memory_input short_name(support::cut(with_both.header_bytes(), 39));
    EXPECT_EQ(header.read(short_name, true), 39u);
    EXPECT_EQ(header.previous_cabinet.value, "p.c");
}

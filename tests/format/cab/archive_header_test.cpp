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
    cabinet full;
    full.header.checksum.reset();
    full.header.cabinet_size = 0xFEDCBA98;
    full.header.reserved_word_1 = 0x11111111;
    full.header.files_offset = 0x89ABCDEF;
    full.header.reserved_word_2 = 0x22222222;
    full.header.folder_count = 0xABCD;
    full.header.file_count = 0xDCBA;
    full.header.set_id = 0x1234;
    full.header.cabinet_index = 7;
    full.header.reserve = support::reserve_area{"kept for me", 255, 254, {}};
    full.header.previous = support::neighbour{"\xE9t\xE9.cab", "disk \xE9"};
    full.header.next = support::neighbour{std::string(300, 'n'), ""};
    const auto bytes = full.header_bytes();
    memory_input input("x" + bytes + "behind");
    input.skip(1);

    archive_header header;
    EXPECT_EQ(header.read(input, true), bytes.size());
    EXPECT_EQ(input.mark, 1u);
    EXPECT_EQ(input.rest(), "behind");
    EXPECT_TRUE(header.is_valid());
    EXPECT_EQ(header.cabinet_size, 0xFEDCBA98u);
    EXPECT_EQ(header.reserved_word_1, 0x11111111u);
    EXPECT_EQ(header.files_offset, 0x89ABCDEFu);
    EXPECT_EQ(header.reserved_word_2, 0x22222222u);
    EXPECT_EQ(header.folder_count, 0xABCDu);
    EXPECT_EQ(header.file_count, 0xDCBAu);
    EXPECT_EQ(header.flags, 7);
    EXPECT_EQ(header.set_id, 0x1234);
    EXPECT_EQ(header.cabinet_index, 7);
    EXPECT_EQ(header.reserve.value.header_size, 11u);
    EXPECT_EQ(header.reserve.value.folder_size, 255u);
    EXPECT_EQ(header.reserve.value.data_size, 254u);
    EXPECT_EQ(header.previous_cabinet.value, "\u00E9t\u00E9.cab");
    EXPECT_EQ(header.previous_disk.value, "disk \xE9");
    EXPECT_EQ(header.next_cabinet.value, std::string(300, 'n'));
    EXPECT_TRUE(header.next_disk.present);

    memory_input plain(cabinet().bytes());
    EXPECT_EQ(header.read(plain, true), 36u);
    EXPECT_FALSE(header.has_previous || header.has_next || header.has_reserve || header.reserve.present);
    EXPECT_EQ(header.reserve.value.folder_size + header.reserve.value.data_size, 0u);
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

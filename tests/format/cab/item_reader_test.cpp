#include "format/cab/folder_header.h"
#include "format/cab/item_reader.h"
#include "support/cabinet_writer.h"
#include "support/memory_streams.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using format::cab::folder_header;
using format::cab::item_reader;
using support::bytes_of;
using support::memory_input;
using support::memory_output;

TEST(ItemReader, RefusesMethodsBeforeAByteIsRead) {
    const std::string reporter = "format::cab::item_reader: ";
    const struct {
        unsigned from, to;
        const char* refusal;
    } words[] = {
        {0x1500, 0x1500, ""},
        {0x0011, 0x0011, ""},
        {2, 2, "quantum compression method not supported"},
        {4, 14, "unsupported compression method"},
        {0x00FF, 0x00FF, "invalid compression method"},
        {0x0E03, 0x0E03, "invalid LZX compression memory "},
        {0x0F03, 0x0F03, ""},
        {0x1503, 0x1503, ""},
        {0x1603, 0x1603, "invalid LZX compression memory "},
        {0x3503, 0x3503, ""},
    };
    for (const auto& c : words) {
        for (unsigned word = c.from; word <= c.to; ++word) {
            folder_header folder;
            folder.compression = static_cast<std::uint16_t>(word);
            memory_input input("data");
            memory_output output;
            item_reader reader(&folder);
            EXPECT_EQ(support::refusal_of([&] { EXPECT_EQ(reader.process(input, output), 0u); }),
                      *c.refusal ? reporter + c.refusal : "")
                << word;
            EXPECT_EQ(input.tell(), 0u);
        }
    }
    EXPECT_EQ(support::refusal_of([] {
                  memory_input input("");
                  memory_output output;
                  item_reader().process(input, output, 1);
              }),
              "stream::transform: partial stream processing is not implemented");
}

TEST(ItemReader, RunsDecodersBlockByBlockAndRefusesWhatDoesntFit) {
    const auto deflated = support::mszip_encoder();
    const std::string text(40000, 'x');
    const auto first = deflated(text.substr(0, 32768)), second = deflated(text.substr(32768));
    const std::string raw_frame("\x00\x30\x30\x00" // no call translation, an uncompressed block of 3 bytes
                                "\x01\x00\x00\x00\x01\x00\x00\x00\x01\x00\x00\x00" // repeated offsets
                                "abc\x00",
                                20);
    const struct {
        std::uint16_t compression;
        std::deque<support::block_record> blocks;
        const char* refusal;
        std::string expanded;
        std::uint64_t place; ///< in the payload of the last block
    } cases[] = {
        {support::mszip,
         {{.payload = first, .uncompressed_size = std::uint16_t{32768}},
          {.payload = second, .uncompressed_size = std::uint16_t{7232}}},
         "",
         text,
         second.size()},
        {support::stored,
         {{.payload = "abc", .uncompressed_size = std::uint16_t{99}},
          {.payload = "", .checksum = 0},
          {.payload = std::string(65535, 'b')}},
         "",
         "abc" + std::string(65535, 'b'),
         65535},
        {support::mszip, {{.payload = "CJxx"}}, "invalid deflate block artifact", "", 2},
        {support::mszip, {{.payload = "C"}}, "invalid deflate block artifact", "", 1},
        {support::mszip,
         {{.payload = first, .uncompressed_size = std::uint16_t{32767}}},
         "Deflate decompression output size mismatch",
         text.substr(0, 32768),
         first.size()},
        {support::lzx(15), {{.payload = raw_frame, .uncompressed_size = std::uint16_t{3}}}, "", "abc", 20},
        {support::lzx(15),
         {{.payload = std::string(20, '\xFF'), .uncompressed_size = std::uint16_t{3}}},
         "LZX decompression output size mismatch",
         "",
         20},
    };
    for (const auto& c : cases) {
        std::string data;
        for (const auto& block : c.blocks)
            data += bytes_of(block);
        support::seekable_input input(data);
        memory_output output;
        folder_header folder;
        folder.compression = c.compression;
        folder.block_count = static_cast<std::uint32_t>(c.blocks.size());
        const auto refusal = support::refusal_of(
            [&] { EXPECT_EQ(item_reader(&folder).process(input, output), c.expanded.size()); });
        EXPECT_EQ(refusal, *c.refusal ? std::string("format::cab::item_reader: ") + c.refusal : "");
        EXPECT_EQ(output.bytes, c.expanded);
        EXPECT_EQ(input.tell(), data.size() - c.blocks.back().payload.size() + c.place) << c.refusal;
    }
}

TEST(ItemReader, TellsWhatIsWrongInACorruptBlockAheadOfItsSize) {
    // Block type 3 in the second block; its size doesn't fit either.
    const std::string data = bytes_of({.payload = support::mszip_encoder()("abc"), .uncompressed_size = 3}) +
                             bytes_of({.payload = "CK\x07", .uncompressed_size = 5});
    support::seekable_input input(data);
    memory_output output;
    folder_header folder;
    folder.compression = support::mszip;
    folder.block_count = 2;
    EXPECT_EQ(support::refusal_of([&] { item_reader(&folder).process(input, output); }),
              "bad deflate block type");
    EXPECT_EQ(output.bytes, "abc");
}

#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_records.h"
#include "harbor6/stream/memory_input.h"
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
            EXPECT_EQ(support::refusal_of([&] { reader.process(input, output, 1); }),
                      "stream::transform: partial stream processing is not implemented");
            EXPECT_EQ(input.tell(), 0u);
        }
    }
}

TEST(ItemReader, KeepsTheBytesOfAStoredBlockThatTheHostsStreamCutsShort) {
    /// Refuses what it never delivered, as the streams of a host do.
    struct refusing_input : memory_input {
        using memory_input::memory_input;
        void unread(const char* from, unsigned length) override {
            if (length > tell() - mark - 8)
                throw stream::cut_short(tell(), "test");
            memory_input::unread(from, length);
        }
    };
    folder_header folder;
    folder.block_count = 2;
    const auto whole = bytes_of({.payload = "before"}) + bytes_of({.payload = "abcdefg", .checksum = 0});
    for (unsigned missing = 1; missing <= 7; ++missing) {
        refusing_input input(support::cut(whole, whole.size() - missing));
        memory_output output;
        EXPECT_THROW(item_reader(&folder).process(input, output), stream::cut_short);
        EXPECT_EQ(output.bytes, support::cut("beforeabcdefg", 13 - missing));
    }
}

TEST(ItemReader, RunsDecodersBlockByBlockAndRefusesWhatDoesntFit) {
    const auto block = [](const std::string& payload, std::uint16_t size) {
        return bytes_of({.payload = payload, .uncompressed_size = size});
    };
    const auto deflated = support::mszip_encoder();
    const std::string text(40000, 'x'), reporter = "format::cab::item_reader: ";
    const auto first = deflated(text.substr(0, 32768)), second = deflated(text.substr(32768));
    const std::string raw_frame("\x00\x30\x30\x00" // no call translation, an uncompressed block of 3 bytes
                                "\x01\x00\x00\x00\x01\x00\x00\x00\x01\x00\x00\x00" // repeated offsets
                                "abc\x00",
                                20);
    const struct {
        const char* name;
        std::uint16_t compression;
        std::string data;
        unsigned blocks;
        std::string refusal, expanded;
        unsigned unread = 0;
    } cases[] = {
        {"two MSZIP blocks", support::mszip, block(first, 32768) + block(second, 7232), 2, "", text},
        {"stored blocks of any size", support::stored, block("abc", 99) + block("", 0) + block(text, 1), 3,
         "", "abc" + text},
        {"no mark", support::mszip, block("CJxx", 4), 1, reporter + "invalid deflate block artifact", "", 2},
        {"half a mark", support::mszip, block("C", 1), 1, reporter + "invalid deflate block artifact", ""},
        {"an MSZIP block of another size", support::mszip, block(first, 32767), 1,
         reporter + "Deflate decompression output size mismatch", text.substr(0, 32768)},
        {"a raw LZX frame", support::lzx(15), block(raw_frame, 3), 1, "", "abc"},
        {"an unsound LZX frame", support::lzx(15), block(std::string(20, '\xFF'), 3), 1,
         reporter + "LZX decompression output size mismatch", ""},
        // Block type 3 in the second block, whose size doesn't fit either: the decoder's failure is
        // reported first.
        {"an unsound MSZIP block", support::mszip, block(first, 32768) + block("CK\x07", 5), 2,
         "bad deflate block type", text.substr(0, 32768)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        stream::memory_input input(c.data);
        memory_output output;
        folder_header folder;
        folder.compression = c.compression;
        folder.block_count = c.blocks;
        EXPECT_EQ(support::refusal_of(
                      [&] { EXPECT_EQ(item_reader(&folder).process(input, output), c.expanded.size()); }),
                  c.refusal);
        EXPECT_EQ(output.bytes, c.expanded);
        EXPECT_EQ(input.tell(), c.data.size() - c.unread);
    }
    folder_header folder;
    folder.compression = support::mszip;
    folder.block_count = 2;
    memory_input fixed(cases[0].data);
    memory_output output;
    EXPECT_EQ(support::refusal_of([&] { item_reader(&folder).process(fixed, output); }),
              reporter + "the archive's stream can't seek back, as MSZIP needs");
}

#include "codec/deflate/deflate_decompressor.h"

#include "support/deflate_streams.h"
#include "support/memory_streams.h"
#include "support/refusal.h"
#include "support/zlib_streams.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <tuple>

namespace {

using namespace deflate_streams;
using zlib_streams::compress, zlib_streams::compress_blocks, zlib_streams::words, zlib_streams::noise;

/// Decodes `stream` by both loops, alone and with other bytes behind it, from a source that delivers all or
/// little at a time, with and without newer instructions, and expects the same each time; the result is that
/// of the stream alone.
outcome decode_all_ways(const std::string& stream, settings how = {}) {
    const outcome alone = decode(stream, true, how);
    EXPECT_EQ(decode(stream, false, how), alone);
    const std::string followed = stream + noise(600);
    for (const unsigned piece : {~0u, 130u, 1u}) {
        how.piece = piece;
        const outcome exact = decode(followed, true, how);
        EXPECT_EQ(decode(followed, false, how), exact);
        how.portable = !how.portable;
        EXPECT_EQ(decode(followed, false, how), exact);
        if (alone.message.empty()) {
            EXPECT_EQ(exact, alone);
        }
    }
    return alone;
}

void expect_sound(const std::string& stream, const std::string& data, const settings& how = {}) {
    const outcome got = decode_all_ways(stream, how);
    EXPECT_EQ(got.message, "");
    EXPECT_TRUE(got.bytes == data) << "of " << data.size() << " bytes";
    EXPECT_EQ(got.position, stream.size());
}

bit_writer stored_block(bool last, unsigned length) {
    return bit_writer().fields({{last, 1}, {0, 2}}).align().fields({{length, 16}, {~length, 16}});
}

bit_writer fixed_block(bool last = true) {
    return bit_writer().fields({{last, 1}, {1, 2}});
}

/// A dynamic block whose code lengths are coded with four bits each: symbol n has the code n, up to 15. 16 is
/// given no code. `lengths` go to some of the literals and, behind them, distances, 0 to the rest.
bit_writer dynamic_block(unsigned literals, unsigned distances,
                         const std::vector<std::pair<unsigned, unsigned>>& given, bit_writer out = {},
                         bool last = true) {
    out.fields({{last, 1}, {2, 2}, {literals - 257, 5}, {distances - 1, 5}, {19 - 4, 4}});
    for (unsigned i = 0; i < 19; ++i)
        out.field(i < 3 ? 0 : 4, 3); // the order begins 16, 17, 18
    std::vector<unsigned> lengths(literals + distances, 0);
    for (const auto& [symbol, length] : given)
        lengths[symbol] = length;
    for (const unsigned length : lengths)
        out.code(length, 4);
    return out;
}

} // namespace

TEST(DeflateDecompressor, DecodesWhatZlibWrites) {
    std::string period(70000, '\0');
    for (std::size_t i = 0; i < period.size(); ++i)
        period[i] = static_cast<char>("abcdefghijklmnopqrstuvw"[i % (3 + i / 4000)]);
    const std::string data[] = {
        "",           words(40000), words(200000),
        noise(70000), period,       std::string(70000, 'z') + noise(1000) + words(40000, 2)};
    for (const auto& each : data)
        for (const int level : {0, 1, 6, 9})
            for (const auto strategy : zlib_streams::strategies) {
                SCOPED_TRACE(testing::Message() << each.size() << " bytes, " << level << ", " << strategy);
                expect_sound(compress(each, level, strategy), each);
            }
}

TEST(DeflateDecompressor, BlocksShareTheirHistoryAndGoOutInOneWriteEach) {
    const std::string data = words(250000) + noise(40000) + words(100000);
    for (const int level : {1, 9}) {
        const auto blocks = compress_blocks(data, level);
        const auto streams = std::accumulate(blocks.begin(), blocks.end(), std::string());
        const settings how{.runs = static_cast<unsigned>(blocks.size())};
        expect_sound(streams, data, how);
        EXPECT_EQ(decode(streams, false, how).writes, blocks.size());
    }
}

TEST(DeflateDecompressor, ReportsEveryFault) {
    // A match of length 3 (symbol 257) from distance 1 at the very start; from one more than there is; from
    // the farthest distance, symbol 29 with 13 extra bits.
    const auto too_far = fixed_block().fixed(257).fixed_distance(0).fixed(256);
    const auto one_too_far = fixed_block().fixed('a').fixed(257).fixed_distance(1).fixed(256);
    const auto farthest = fixed_block().fixed('a').fixed(257).fixed_distance(29).field(0x1FFF, 13).fixed(256);

    const auto overfull = dynamic_block(257, 1, {{0, 1}, {1, 1}, {256, 1}}); // three codes of one bit
    const auto gappy = dynamic_block(257, 1, {{0, 1}, {256, 2}});            // a half and a quarter
    // A sound literal code, one distance of two bits.
    const auto gappy_distance = dynamic_block(257, 1, {{0, 1}, {256, 1}, {257, 2}});
    // One literal code, 0; then the other half.
    const auto half = dynamic_block(257, 1, {{256, 1}, {257, 1}}).code(1, 1);
    // 'a' 0, end 10, length three 11; distance one is 0. Then the same without any distance code.
    const auto half_distance =
        dynamic_block(258, 1, {{'a', 1}, {256, 2}, {257, 2}, {258, 1}}).code(0, 1).code(3, 2).code(1, 1);
    const auto no_distance =
        dynamic_block(258, 1, {{'a', 1}, {256, 2}, {257, 2}}).code(0, 1).code(3, 2).code(0, 1);
    // HCLEN 4: lengths for 16, 17, 18, 0; 16 and 0 get one bit, so the code 1 is symbol 16.
    const auto repeat_first =
        bit_writer().fields({{1, 1}, {2, 2}, {0, 14}, {1, 3}, {0, 6}, {1, 3}}).code(1, 1);
    // HCLEN 4: three codes of one bit.
    const auto bad_length_code =
        bit_writer().fields({{1, 1}, {2, 2}, {0, 14}, {1, 3}, {1, 3}, {1, 3}, {0, 3}});

    const std::pair<const char*, bit_writer> cases[] = {
        {"bad deflate block type", bit_writer().fields({{1, 1}, {3, 2}})},
        {"deflate compressed data size mismatch",
         bit_writer().fields({{1, 1}, {0, 2}}).align().fields({{5, 16}, {5, 16}}).raw("hello")},
        {"invalid deflate codeword size set", overfull},
        {"invalid deflate codeword size set", bad_length_code},
        {"incomplete deflate codeword size set", gappy},
        {"incomplete deflate codeword size set", gappy_distance},
        {"too many deflate codewords", half},
        {"too many deflate codewords", half_distance},
        {"too many deflate codewords", no_distance},
        {"bad deflate length code", fixed_block().fixed('a').fixed(286)},
        {"bad deflate length code", fixed_block().fixed('a').fixed(287)},
        {"bad deflate distance code", fixed_block().fixed('a').fixed(257).fixed_distance(30)},
        {"bad deflate distance code", fixed_block().fixed('a').fixed(257).fixed_distance(31)},
        {"deflate distance too far back", too_far},
        {"deflate distance too far back", one_too_far},
        {"deflate distance too far back", farthest},
        {"bad deflate code length repeat", repeat_first},
        // Three bits and five times nine end on a byte; the ones behind are the literals 255.
        {"incomplete deflate stream", fixed_block().fixed(200).fixed(200).fixed(200).fixed(200).fixed(200)},
        // No byte at all: the ones make a final block of type 3.
        {"bad deflate block type", {}},
    };
    for (const auto& [message, writer] : cases) {
        SCOPED_TRACE(message);
        const auto& stream = writer.bytes;
        EXPECT_EQ(decode_all_ways(stream).message, message);
        // The same behind a block that the fast loop decodes; what was sound before stays as unknown.
        if (stream != too_far.bytes && stream != one_too_far.bytes) {
            EXPECT_EQ(decode_all_ways(compress(words(3000), 6) + stream, {.runs = 2}).message, message);
        }
    }
}

TEST(DeflateDecompressor, AcceptsTheOddButSound) {
    const auto empty = stored_block(false, 0).bytes, ab = stored_block(false, 2).raw("ab").bytes;
    // The fixed codes are the same in the next block, and again behind a block with codes of its own.
    auto mixed = fixed_block(false).fixed('a').fixed(256).fields({{0, 1}, {1, 2}}).fixed('b').fixed(256);
    mixed = dynamic_block(257, 1, {{'c', 1}, {256, 1}}, mixed, false).code(0, 1).code(1, 1);
    mixed.fields({{1, 1}, {1, 2}}).fixed('d').fixed(257).fixed_distance(1).fixed(256);
    // Fifteen bits, the longest code there is: lengths 1 to 14 and two of 15.
    std::vector<std::pair<unsigned, unsigned>> lengths = {{256, 15}};
    for (unsigned i = 1; i <= 15; ++i)
        lengths.emplace_back('a' + i, i);
    auto deep = dynamic_block(257, 1, lengths);
    std::string text;
    for (unsigned i = 0; i < 900; ++i) {
        const unsigned length = 1 + i % 15;
        deep.code(length < 15 ? (1u << length) - 2 : 0x7FFE, length);
        text += static_cast<char>('a' + length);
    }
    // Code lengths 16: 0, 18: 10, 1: 110, 2: 111. 'a' gets 2 bits and symbols 256 to 258 too; the run of 16
    // carries that on to the distances 0 to 3, and asks for two more, which are cut off.
    auto runs = bit_writer().fields({{1, 1}, {2, 2}, {258 - 257, 5}, {4 - 1, 5}, {18 - 4, 4}});
    for (const unsigned length : {1u, 0u, 2u, 0u, 0u, 0u, 0u, 0u, 0u, 0u, 0u, 0u, 0u, 0u, 0u, 3u, 0u, 3u})
        runs.field(length, 3);
    runs.code(2, 2).field(97 - 11, 7).code(7, 3);                    // 97 zeros, 'a' 2
    runs.code(2, 2).field(138 - 11, 7).code(2, 2).field(19 - 11, 7); // zeros up to 254
    runs.code(7, 3).code(7, 3).code(7, 3);                           // 255, 256, 257: 2 bits each
    runs.code(0, 1).field(3, 2);                                     // six times 2 bits, four wanted
    runs.code(0, 2).code(1, 2).code(3, 2).code(1, 2).code(2, 2);     // a, 255, length 3 distance 2, end

    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"empty stored blocks", empty + ab + stored_block(true, 0).bytes, "ab"},
        {"history of a stored block",
         ab + fixed_block().fixed('c').fixed(257).fixed_distance(2).fixed(256).bytes, "abcabc"},
        {"both codes of length 258",
         fixed_block().fixed('a').fixed(285).code(0, 5).fixed(284).field(31, 5).code(0, 5).fixed(256).bytes,
         std::string(517, 'a')},
        {"fixed codes around other codes", mixed.bytes, "abcdcdc"},
        // 'a' 0, end 10, length three 11; the one distance code is 0.
        {"a single distance code",
         dynamic_block(258, 1, {{'a', 1}, {256, 2}, {257, 2}, {258, 1}}).code(13, 5).code(0, 1).bytes,
         "aaaa"},
        {"no distance code", dynamic_block(257, 1, {{'a', 1}, {256, 1}}).code(1, 3).bytes,
         "aa"}, // 'a' 0, end 1, no distance
        {"unused codes of 286 and 287",
         dynamic_block(288, 30, {{'a', 2}, {256, 2}, {286, 2}, {287, 2}}).code(1, 4).bytes, "a"},
        {"codes of 1 to 15 bits", deep.code(0x7FFF, 15).bytes, text},
        {"runs from literals to distances", runs.bytes, std::string("a\xFF") + "a\xFF" + "a"},
    };
    for (const auto& [name, stream, data] : cases) {
        SCOPED_TRACE(name);
        expect_sound(stream, data);
    }
}

TEST(DeflateDecompressor, StoredBytesMissingAtTheEndAreOnes) {
    // In a block that isn't the last, the ones go on to make a block of type 3.
    const auto followed = stored_block(false, 40).raw("abc").bytes;
    // The ones are the extra bits of a distance, then the end; by then four bytes of them are in the buffer.
    const auto match = dynamic_block(258, 9, {{'b', 1}, {'a', 3}, {256, 3}, {257, 2}, {258 + 8, 1}})
                           .code(0, 31)
                           .code(2, 2)
                           .code(0, 1)
                           .bytes;
    for (const bool exact : {true, false}) {
        EXPECT_EQ(decode(stored_block(true, 40).raw("abc").bytes, exact),
                  (outcome{"abc" + std::string(37, '\xFF'), "", 8, 1}));
        EXPECT_EQ(decode(followed, exact).message, "bad deflate block type");
        EXPECT_EQ(decode(match, exact), (outcome{std::string(34, 'b'), "", match.size(), 1}));
    }
}

TEST(DeflateDecompressor, CutAnywhereBothLoopsAgree) {
    const std::string data = words(3000) + noise(300);
    for (const auto& stream :
         {compress(data, 0), compress(data, 6), compress(data, 6, zlib_streams::fixed_codes)})
        for (std::size_t size = 0; size < stream.size(); ++size) {
            const auto got = decode(stream.substr(0, size), true);
            EXPECT_EQ(decode(stream.substr(0, size), false), got) << "at " << size;
            EXPECT_TRUE(!got.message.empty() || stream.size() > data.size()) << "at " << size;
        }
}

TEST(DeflateDecompressor, DamagedAnywhereBothLoopsAgree) {
    std::mt19937 random(7);
    const auto blocks = compress_blocks(words(70000) + noise(2000), 6);
    const auto sound = std::accumulate(blocks.begin(), blocks.end(), std::string());
    const settings how{.runs = static_cast<unsigned>(blocks.size())};
    unsigned failed = 0;
    for (unsigned round = 0; round < 1500; ++round) {
        std::string stream = sound;
        for (auto flips = 1 + random() % 3; flips > 0; --flips)
            stream[random() % (round % 2 ? 200 : stream.size())] ^= static_cast<char>(1u << random() % 8);
        const auto exact = decode(stream, true, how);
        EXPECT_EQ(decode(stream, false, how), exact) << "round " << round;
        failed += !exact.message.empty();
    }
    EXPECT_GT(failed, 300u);
}

TEST(DeflateDecompressor, OtherExtents) {
    const std::string stream = fixed_block().fixed('a').fixed(256).bytes;
    for (const int extent : {9, 26, 1, -1})
        EXPECT_EQ(decode_all_ways(stream, {.extent = extent}).message, "bad deflate compression extent");
    for (const std::string& source : {std::string(), '\x09' + stream, '\x1A' + stream, '\xFF' + stream})
        EXPECT_EQ(decode(source, true, {.extent = 0}).message, "bad deflate compression extent");
    expect_sound(stream, "a", {.extent = 10});
    for (const char extent : {'\x0A', '\x10'})
        expect_sound(extent + stream, "a", {.extent = 0});
    const std::string data = words(300000);
    for (const int extent : {10, 12, 15, 25}) // zlib's distances stay within each
        EXPECT_TRUE(decode_all_ways(compress(data, 6), {.extent = extent}).bytes == data || extent < 15);

    // Extended: symbol 285 takes 16 bits, and distance symbol 30 is 32769 and more.
    bit_writer extended = fixed_block();
    extended.fixed('a').fixed(285).field(65535, 16).fixed_distance(0).fixed('b');
    extended.fixed(257).fixed_distance(30).field(65538 - 32769, 14).fixed(256);
    expect_sound(extended.bytes, std::string(65539, 'a') + "baaa", {.extent = 16});
    EXPECT_NE(decode_all_ways(extended.bytes).message, ""); // the same bits in the plain form
    // A sixth bit of HDIST, and more distances than there can be.
    const auto many = bit_writer().fields({{15, 8}, {1, 1}, {2, 2}, {0, 5}, {50, 6}}).bytes;
    EXPECT_EQ(decode_all_ways(many, {.extent = 0}).message, "too many deflate codewords");
}

TEST(DeflateDecompressor, AFailedRunLeavesNothingToTheNext) {
    // Fails behind "abc"; the next run refers to what was decoded before, but writes only its own bytes.
    const auto failing = fixed_block().fixed('a').fixed('b').fixed('c').fixed(286).bytes;
    const auto both =
        failing + fixed_block().fixed('d').fixed(257).fixed_distance(3).field(0, 1).fixed(256).bytes;
    for (const bool exact : {true, false}) {
        support::memory_output out;
        support::seekable_input in(both);
        deflate::decompressor decoder(in, out);
        decoder.rewind = true;
        if (exact)
            decoder.use_exact_loop_only();
        EXPECT_EQ(support::refusal_of([&] { decoder.run(); }), "bad deflate length code");
        EXPECT_EQ(out.bytes, "");
        in.seek(failing.size());
        decoder.run();
        EXPECT_EQ(out.bytes, "dabc");
    }
}

#include "codec/lzx/lzx_decompressor.h"

#include "codec/lzx/lzx_translation.h"
#include "formats/cab/records.h"
#include "harbor6/groundwork/exception.h"
#include "support/lzx_writer.h"
#include "support/memory_streams.h"
#include "support/numbers.h"
#include "support/temporary_folder.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>

namespace {

using support::lzx_frame;
using support::lzx_shape;
using support::lzx_token;
using support::lzx_writer;
using frames = std::vector<lzx_frame>;

/// What a decoder gave for a run of frames, up to the first that failed.
struct outcome {
    std::vector<std::int64_t> results;
    std::string bytes;
};

outcome decode(const frames& coded, unsigned window_bits, bool exact_only) {
    std::string all;
    for (const auto& frame : coded)
        all += frame.bytes;
    support::memory_input input(all);
    outcome got;
    algorithm::lzx::decompressor decoder(1u << window_bits);
    if (exact_only)
        decoder.use_exact_loop_only();
    for (const auto& frame : coded) {
        struct one_write : support::memory_output {
            using memory_output::write;
            void write(const char* buffer, unsigned length) override {
                ++writes;
                memory_output::write(buffer, length);
            }
            int writes = 0;
        } output;
        got.results.push_back(decoder.process_block(input, output, frame.bytes.size(), frame.size));
        got.bytes += output.bytes;
        EXPECT_EQ(output.writes, got.results.back() >= 0);
        if (got.results.back() < 0)
            break;
    }
    return got;
}

/// What both loops agree on.
outcome decoded(const frames& coded, unsigned window_bits) {
    const auto exact = decode(coded, window_bits, true);
    const auto fast = decode(coded, window_bits, false);
    EXPECT_EQ(exact.results, fast.results);
    EXPECT_TRUE(exact.bytes == fast.bytes) << "the loops differ";
    return fast;
}

/// The tokens' meaning by the plainest means, history before the first byte being zeros.
std::string expand(const std::vector<lzx_token>& tokens, std::string history = {}) {
    for (const auto& token : tokens)
        for (std::uint32_t i = 0; i < token.length; ++i)
            history += token.length == 1              ? static_cast<char>(token.value)
                       : token.value > history.size() ? '\0'
                                                      : history[history.size() - token.value];
    return history;
}

/// Tokens for `size` bytes from stream position `at` on, none across a frame's end.
std::vector<lzx_token> random_tokens(support::numbers& random, std::uint32_t at, std::uint32_t size,
                                     std::uint32_t farthest, std::uint32_t frame_bytes = 32768,
                                     unsigned literals_in_16 = 5) {
    std::vector<lzx_token> tokens;
    std::vector<std::uint32_t> recent{1, 1, 1};
    for (const std::uint32_t end = at + size; at < end;) {
        const std::uint32_t room = std::min(end - at, frame_bytes - at % frame_bytes);
        lzx_token next{1, 97 + random() % 20 * (random() % 8 == 0)};
        if (room > 1 && random() % 16 >= literals_in_16) {
            const std::uint32_t length = random() % 4 == 0 ? random() % 256 + 2 : random() % 9 + 2;
            // Offsets of every magnitude, and often the shortest and the farthest.
            std::uint32_t offset = random() % farthest >> random() % 21;
            if (random() % 16 == 0)
                offset = farthest - random() % 80;
            if (random() % 5 == 0)
                offset = recent[random() % 3];
            next = {std::min(length, room), std::clamp(offset, 1u, farthest)};
            recent[random() % 3] = next.value;
        }
        at += next.length;
        tokens.push_back(next);
    }
    return tokens;
}

std::vector<lzx_token> literals(const std::string& text) {
    std::vector<lzx_token> tokens;
    for (const char c : text)
        tokens.push_back({1, static_cast<unsigned char>(c)});
    return tokens;
}

/// Cuts, flips and shuffles, all of which must end, and alike in both loops.
void expect_agreement_when_damaged(const frames& coded, unsigned window_bits, unsigned rounds,
                                   unsigned seed) {
    support::numbers random(seed);
    for (unsigned round = 0; round < rounds; ++round) {
        frames bad = coded;
        auto& frame = bad[random() % bad.size()];
        if (frame.bytes.empty())
            continue;
        switch (random() % 4) {
        case 0: { // often close to one of the ends
            const std::size_t cut = random() % frame.bytes.size() >> random() % 14;
            frame.bytes.resize(random() % 2 == 0 ? cut : frame.bytes.size() - 1 - cut);
            break;
        }
        case 1:
            std::swap(frame, bad[random() % bad.size()]);
            break;
        case 2:
            frame.size = random() % 32769;
            break;
        default:
            for (unsigned flips = random() % 3 + 1; flips > 0; --flips)
                frame.bytes[random() % frame.bytes.size()] ^= static_cast<char>(1 << random() % 8);
        }
        SCOPED_TRACE(round);
        decoded(bad, window_bits);
        if (testing::Test::HasFailure())
            return;
    }
}

} // namespace

TEST(LzxDecompressor, RefusesAWindowThatIsNoPowerOfTwo) {
    for (const std::uint32_t size : {0u, 3u, 32767u, 32769u, 1u << 22}) {
        try {
            algorithm::lzx::decompressor decoder(size);
            FAIL() << size;
        } catch (const algorithm::exception& e) {
            EXPECT_STREQ(e.what(), "Invalid compression window size");
        }
    }
}

TEST(LzxDecompressor, AgreesInBothLoopsOnDamagedCabinetsOfAnotherWriter) {
    for (const std::string name :
         {"15-calls", "16-edges", "17-mixed", "18-raw", "19-smallblocks", "21-calls"}) {
        SCOPED_TRACE(name);
        support::memory_input input(support::read_file(HARBOR_TEST_DATA "/lzx" + name + ".cab"));
        format::cab::archive_header header;
        header.read(input, true);
        format::cab::folder_header folder; // the only one
        folder.read(input, true);
        input.skip(folder.data_offset - input.tell());
        format::cab::data_header block;
        frames coded;
        for (auto left = folder.block_count; left > 0; --left) {
            block.read(input, true);
            coded.push_back({std::string(block.payload.get(), block.compressed_size),
                             static_cast<std::uint32_t>(block.uncompressed_size)});
            input.skip(block.compressed_size);
        }
        const auto window_bits = static_cast<unsigned>(std::stoi(name));
        EXPECT_GT(decoded(coded, window_bits).results.back(), 0);
        expect_agreement_when_damaged(coded, window_bits, 40, 7);
    }
}

TEST(LzxDecompressor, DecodesEveryKindOfBlockInEveryWindow) {
    support::numbers random(1);
    for (unsigned bits = 15; bits <= 21; ++bits) {
        SCOPED_TRACE(bits);
        lzx_writer writer(bits);
        std::string expected;
        // Far enough to go round the window, blocks shorter and longer than a frame, odd raw ones.
        for (unsigned round = 0; expected.size() < (2u << bits) + 100000; ++round) {
            const auto at = static_cast<std::uint32_t>(expected.size());
            const std::uint32_t size = round % 5 == 0 ? random() % 40 : random() % (60000u << (bits / 20));
            const auto tokens = random_tokens(random, at, size, (1u << bits) - 3);
            const std::size_t before = expected.size();
            expected = expand(tokens, std::move(expected));
            if (round % 4 == 3) {
                writer.raw(expected.substr(before),
                           {random() % 1000 + 1, 1 + random() % 20, (1u << bits) - 3});
            } else {
                writer.block(tokens,
                             {.aligned = round % 4 == 1, .repeats = round % 3 != 0, .runs = round % 7 != 0});
            }
        }
        const auto coded = writer.finish();
        EXPECT_TRUE(decoded(coded, bits).bytes == expected);
        expect_agreement_when_damaged(coded, bits, 30, bits);
    }
}

TEST(LzxDecompressor, DecodesEveryFrameSizeMixOfTokensAndKindOfTreeBlock) {
    support::numbers random(2);
    for (const std::uint32_t frame_bytes : {1u, 7u, 256u, 257u, 300u, 700u, 1000u, 1400u, 4096u, 32768u})
        for (const unsigned literals_in_16 : {0u, 1u, 5u, 15u, 16u})
            for (const bool aligned : {false, true}) {
                SCOPED_TRACE(testing::Message() << frame_bytes << " bytes a frame, " << literals_in_16
                                                << "/16 literals, " << (aligned ? "aligned" : "verbatim"));
                lzx_writer writer(21, frame_bytes);
                const std::uint32_t size = std::min(1u << 18, frame_bytes * 400);
                const auto tokens =
                    random_tokens(random, 0, size, (1u << 21) - 3, frame_bytes, literals_in_16);
                writer.block(tokens, {.aligned = aligned});
                EXPECT_TRUE(decoded(writer.finish(), 21).bytes == expand(tokens));
            }
}

TEST(LzxDecompressor, TakesTreesOfEveryShape) {
    const std::string text = "ab\0c";
    // Codes of 1 to 16 bits: a chain of literals, the longest pair last.
    std::vector<std::uint8_t> chain(256 + 256);
    for (unsigned l = 1; l <= 16; ++l)
        chain['a' + l] = static_cast<std::uint8_t>(l);
    chain['a' + 17] = 16;
    std::string ladder;
    for (unsigned i = 0; i < 3000; ++i)
        ladder += static_cast<char>('b' + i % 17);
    // Every symbol in use, so all codes about as long as each other.
    std::vector<std::uint8_t> flat(256 + 256, 9);

    std::vector<lzx_token> long_matches{{1, 'x'}};
    for (std::uint32_t length = 2; length <= 257; ++length)
        long_matches.push_back({length, 1 + length % 40});
    std::vector<lzx_token> nines = literals(std::string(300, 'n'));
    nines.resize(1000, {9, 40});
    std::vector<lzx_token> footers; // every aligned offset symbol
    for (std::uint32_t i = 0; i < 1000; ++i)
        footers.push_back({9, 14 + i % 8});
    const struct {
        const char* name;
        std::vector<lzx_token> tokens;
        lzx_shape shape;
    } cases[] = {
        {"length symbols without a code", nines, {.length_lengths = std::vector<std::uint8_t>(249)}},
        {"one symbol", literals(std::string(1000, 'a')), {}},
        {"a chain", literals(ladder), {.main_lengths = chain}},
        {"flat", literals(ladder), {.runs = false, .main_lengths = flat}},
        {"every length", long_matches, {}},
        {"every length, aligned", long_matches, {.aligned = true}},
        {"aligned codes of 1 to 7 bits",
         footers,
         {.aligned = true, .repeats = false, .aligned_lengths = {7, 1, 2, 3, 4, 5, 6, 7}}},
        {"aligned tree unused", literals(ladder), {.aligned = true}},
        {"aligned tree of two symbols", {{1, 'q'}, {30, 14}, {2, 22}}, {.aligned = true}},
        {"no code at all, which reads as zeros",
         literals(std::string(500, '\0')),
         {.main_lengths = std::vector<std::uint8_t>(256 + 256)}},
        {"aligned tree too full by a whole",
         literals(ladder),
         {.aligned = true, .aligned_lengths = {1, 1, 2, 2, 3, 3, 3, 3}}},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        lzx_writer writer(16, 65535);
        writer.block(each.tokens, each.shape);
        writer.block(literals(text)); // its lengths are deltas on the odd ones
        EXPECT_TRUE(decoded(writer.finish(), 16).bytes == expand(each.tokens) + "ab");
    }
}

TEST(LzxDecompressor, PadsOddRawBlocksAndPassesEmptyOnesAndEmptyFrames) {
    for (const std::uint32_t size : {1u, 2u, 99u, 100u, 101u}) {
        SCOPED_TRACE(size);
        lzx_writer writer(16, 100);
        const std::string text(size, 'r');
        writer.raw("");
        writer.block({});
        writer.raw(text, {3, 2, 1});
        writer.raw("");
        writer.raw("odd");
        writer.block(literals("end"));
        auto coded = writer.finish();
        coded.insert(coded.begin() + 1, lzx_frame{"", 0});
        EXPECT_EQ(decoded(coded, 16).bytes, text + "oddend");
    }
    // The limit lies four bytes behind the data.
    for (const unsigned left : {8u, 9u, 12u, 13u}) {
        lzx_writer writer(15);
        writer.header(3, 1);
        auto coded = writer.finish();
        coded.at(0) = {coded.at(0).bytes.substr(0, 4) + std::string(left, 1), 1};
        EXPECT_EQ(decoded(coded, 15).results.back(), left == 8 ? -1 : 1) << left;
    }
    // The window's first bytes are mirrored behind its end.
    std::string text(32768, 'A');
    lzx_writer writer(15);
    const auto start = "0123456789" + std::string(290, 'B');
    writer.raw(text);
    writer.raw(start);
    writer.block({{20, 310}});
    EXPECT_TRUE(decoded(writer.finish(), 15).bytes == expand({{20, 310}}, text + start));
}

TEST(LzxDecompressor, WrapsOffsetsBehindTheStartIntoTheWindow) {
    for (const std::uint32_t offset : {0u, 0x8000u, 0xFFFFFFFFu, 0x12345678u, 0x7FFFu, 0x7FC0u})
        for (const unsigned which : {0u, 1u, 2u}) {
            SCOPED_TRACE(testing::Message() << offset << " as the offset " << which);
            lzx_writer writer(15);
            std::string text;
            for (unsigned i = 0; i < 40000; ++i)
                text += static_cast<char>(i * i >> 7);
            std::array<std::uint32_t, 3> repeated = {35, 90, 700};
            repeated[which] = offset;
            writer.raw(text, repeated);
            std::vector<lzx_token> tokens;
            for (unsigned i = 0; i < 90; ++i)
                tokens.insert(tokens.end(), {{i % 40 + 2, repeated[i % 3]}, {1, 'x'}});
            writer.block(tokens);
            // 0 and whole windows copy what stood there one window before.
            for (auto& token : tokens)
                if (token.length > 1)
                    token.value = token.value % 32768 == 0 ? 32768 : token.value % 32768;
            EXPECT_TRUE(decoded(writer.finish(), 15).bytes == expand(tokens, text));
        }
}

TEST(LzxDecompressor, FailsWithoutWriting) {
    const std::string text = "some text, and some more text, and some text again";
    std::vector<std::uint8_t> incomplete(256 + 240);
    incomplete['s'] = 2;
    std::vector<std::uint8_t> full(256 + 240, 2);
    const struct {
        const char* name;
        std::function<void(lzx_writer&)> write;
    } failures[] = {
        {"block type 0", [](lzx_writer& w) { w.header(0, 100); }},
        {"block type 7", [](lzx_writer& w) { w.header(7, 100); }},
        {"no input at all", [](lzx_writer&) {}},
        {"empty blocks to the end", [](lzx_writer& w) { w.raw(""), w.raw(""), w.block({}); }},
        {"trees cut off", [](lzx_writer& w) { w.header(1, 100), w.put(0, 16); }},
        {"aligned tree cut off", [](lzx_writer& w) { w.header(2, 100); }},
        {"incomplete aligned tree",
         [&](lzx_writer& w) {
             w.block(literals(text), {.aligned = true, .aligned_lengths = {1, 2, 0, 0, 0, 0, 0, 0}});
         }},
        {"over-full aligned tree",
         [&](lzx_writer& w) {
             w.block(literals(text), {.aligned = true, .aligned_lengths = {1, 1, 1, 1, 0, 0, 0, 0}});
         }},
        {"incomplete main tree",
         [&](lzx_writer& w) { w.block(literals(text), {.main_lengths = incomplete}); }},
        {"over-full main tree", [&](lzx_writer& w) { w.block(literals(text), {.main_lengths = full}); }},
        {"incomplete length tree",
         [&](lzx_writer& w) {
             std::vector<std::uint8_t> lengths(249);
             lengths[7] = 1;
             w.block(literals(text), {.length_lengths = lengths});
         }},
        {"over-full pre-tree",
         [](lzx_writer& w) {
             w.header(1, 100);
             for (unsigned i = 0; i < 100; ++i)
                 w.put(0x1111, 16);
         }},
        {"a delta above 16 in a run",
         [](lzx_writer& w) {
             w.header(1, 100);
             w.put(0, 16), w.put(0, 16), w.put(0, 16), w.put(0, 16), w.put(0x0101, 16); // symbols 17 and 19
             for (unsigned i = 0; i < 100; ++i)
                 w.put(0xFFFF, 16);
         }},
        {"a raw block cut off",
         [&](lzx_writer& w) { w.header(3, 100), w.put(0, 32), w.put(0, 16 * 30 - 28), w.put(0, 16); }},
    };
    for (const auto& each : failures) {
        SCOPED_TRACE(each.name);
        lzx_writer writer(15);
        each.write(writer);
        auto coded = writer.finish();
        if (coded.empty())
            coded.push_back({"", 0});
        if (coded[0].size == 0)
            coded[0].size = 100;
        EXPECT_EQ(decoded(coded, 15).results, std::vector<std::int64_t>{-1});
    }
    for (const bool aligned : {false, true}) {
        lzx_writer writer(15);
        writer.block(literals(text), {.aligned = aligned});
        EXPECT_EQ(decoded(writer.finish(), 15).bytes, text) << "so it wasn't the text that failed";
    }
}

TEST(LzxDecompressor, FailsWhereAMatchPassesItsBlockOrASymbolBeginsBehindTheData) {
    lzx_writer writer(15);
    auto tokens = literals(std::string(300, 'a') + "bcd");
    tokens.resize(400, {200, 3});
    writer.block(tokens);
    writer.block(literals("more"));
    auto coded = writer.finish();
    EXPECT_TRUE(decoded(coded, 15).bytes == expand(tokens) + "more");
    coded[0].bytes[2] = static_cast<char>(coded[0].bytes[2] ^ 1 << 4); // the lowest bit of the block's size
    EXPECT_EQ(decoded(coded, 15).results.back(), -1);

    std::vector<std::uint8_t> bit_each(256 + 240);
    bit_each['a'] = bit_each['b'] = 1;
    lzx_writer plain(15);
    plain.block(literals(std::string(2000, 'a')), {.main_lengths = bit_each});
    coded = plain.finish();
    EXPECT_EQ(decoded(coded, 15).results.back(), 2000);
    coded[0].bytes.resize(coded[0].bytes.size() - 2);
    EXPECT_EQ(decoded(coded, 15).results.back(), -1);
}

TEST(LzxDecompressor, FailsWhereAFrameEndsInsideAMatchOrPassesTheWindow) {
    lzx_writer writer(15);
    auto tokens = literals("abcdef");
    tokens.push_back({200, 3});
    writer.block(tokens);
    auto coded = writer.finish();
    for (const std::uint32_t size : {7u, 205u, 32769u, 0xFFFFFFFFu}) {
        coded[0].size = size;
        EXPECT_EQ(decoded(coded, 15).results.back(), -1) << size;
    }
    // 65535 bytes in one frame are sound where they fit.
    support::numbers random(5);
    const auto long_tokens = random_tokens(random, 0, 65535, 65533, 65535);
    lzx_writer long_writer(16, 65535);
    long_writer.block(long_tokens);
    EXPECT_TRUE(decoded(long_writer.finish(), 16).bytes == expand(long_tokens));
}

TEST(LzxDecompressor, TranslatesCallsFrameByFrame) {
    std::string coded(100000, '\x90');
    support::numbers random(6);
    for (std::size_t at = 0; at + 200 < coded.size(); at += 5 + random() % 90) {
        coded[at] = '\xE8';
        coded[at + 3] = static_cast<char>(random() % 2); // operands below 0x290'0000
    }
    for (const std::uint32_t size : {0u, 1u, 100000u, 12000000u}) {
        lzx_writer writer(17);
        writer.translation(size);
        writer.block(literals(coded));
        std::string expected;
        std::uint32_t position = 0;
        for (std::size_t at = 0; at < coded.size(); at += 32768) {
            auto frame = coded.substr(at, 32768);
            if (size != 0)
                algorithm::lzx::translate_calls(reinterpret_cast<std::uint8_t*>(frame.data()), frame.size(),
                                                size, position);
            expected += frame;
        }
        EXPECT_TRUE(decoded(writer.finish(), 17).bytes == expected) << size;
    }
}

// A reader that begins in the middle of such a symbol never finds the beginning of one, and of short codes
// far more follow each other than usual.
TEST(LzxDecompressor, ReadsCodesOfOneLength) {
    support::numbers random(9);
    for (const unsigned bits : {1u, 2u, 5u, 9u}) {
        const auto symbols = std::min(1u << bits, 256u);
        std::string text(100000, '\0');
        for (char& byte : text)
            byte = static_cast<char>(random() % symbols);
        std::vector<std::uint8_t> lengths(512);
        std::fill_n(lengths.begin(), 1u << bits, static_cast<std::uint8_t>(bits));
        lzx_writer writer(16);
        writer.block(literals(text), {.main_lengths = lengths});
        const auto coded = writer.finish();
        EXPECT_TRUE(decoded(coded, 16).bytes == text) << bits;
        expect_agreement_when_damaged(coded, 16, 20, bits);
    }
}

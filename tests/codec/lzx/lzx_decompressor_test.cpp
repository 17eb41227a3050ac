#include "codec/lzx/lzx_decompressor.h"

#include "support/lzx_writer.h"
#include "support/memory_streams.h"
#include "support/numbers.h"
#include "support/refusal.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <map>

namespace {

using support::lzx_frame, support::lzx_shape, support::lzx_token, support::lzx_writer;
using frames = std::vector<lzx_frame>;

/// The results for a run of frames, up to the first that failed.
struct outcome {
    std::vector<std::int64_t> results;
    std::string bytes;
};

/// The exact loop in a new decoder, both loops in one that has decoded what came before, sound or not.
outcome decode(const frames& coded, unsigned window_bits, bool exact_only) {
    std::string all;
    for (const auto& frame : coded)
        all += frame.bytes;
    support::memory_input input(all);
    outcome got;
    algorithm::lzx::decompressor fresh(1u << window_bits);
    fresh.use_exact_loop_only();
    static std::map<unsigned, algorithm::lzx::decompressor> used;
    auto& decoder = exact_only ? fresh : used.try_emplace(window_bits, 1u << window_bits).first->second;
    decoder.restart();
    for (const auto& frame : coded) {
        support::memory_output output;
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

/// The frames of one block.
frames code(unsigned window_bits, const std::vector<lzx_token>& tokens, const lzx_shape& shape = {},
            std::uint32_t frame_bytes = 32768) {
    lzx_writer writer(window_bits, frame_bytes);
    writer.block(tokens, shape);
    return writer.finish();
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
        const auto kind = random() % 4;
        if (kind == 0) { // often close to one of the ends
            const std::size_t cut = random() % frame.bytes.size() >> random() % 14;
            frame.bytes.resize(random() % 2 == 0 ? cut : frame.bytes.size() - 1 - cut);
        } else if (kind == 1) {
            std::swap(frame, bad[random() % bad.size()]);
        } else if (kind == 2) {
            frame.size = random() % 32769;
        } else {
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
    for (const std::uint32_t size : {0u, 3u, 32767u, 32769u, 1u << 22})
        EXPECT_EQ(support::refusal_of([&] { algorithm::lzx::decompressor decoder(size); }),
                  "algorithm::lzx::decompressor: Invalid compression window size");
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
                const std::uint32_t size = std::min(1u << 18, frame_bytes * 400);
                const auto tokens =
                    random_tokens(random, 0, size, (1u << 21) - 3, frame_bytes, literals_in_16);
                const auto coded = code(21, tokens, {.aligned = aligned}, frame_bytes);
                EXPECT_TRUE(decoded(coded, 21).bytes == expand(tokens));
            }
}

TEST(LzxDecompressor, TakesTreesOfEveryShape) {
    const std::string text = "ab";
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

    std::vector<lzx_token> long_matches{{1, 'x'}}, footers, nines = literals(std::string(300, 'n'));
    for (std::uint32_t length = 2; length <= 257; ++length)
        long_matches.push_back({length, 1 + length % 40});
    nines.resize(1000, {9, 40});
    for (std::uint32_t i = 0; i < 1000; ++i)
        footers.push_back({9, 14 + i % 8}); // every aligned offset symbol
    struct tree_case {
        std::string name;
        std::vector<lzx_token> tokens;
        lzx_shape shape;
    };
    std::vector<tree_case> cases{
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
    // A reader that begins in the middle of such a symbol never finds the beginning of one, and of short
    // codes far more follow each other than usual.
    for (const unsigned bits : {1u, 2u, 5u, 9u}) {
        support::numbers random(9);
        auto& each = cases.emplace_back(tree_case{"codes of length " + std::to_string(bits), {}, {}});
        for (unsigned i = 0; i < 30000; ++i)
            each.tokens.push_back({1, random() % std::min(1u << bits, 256u)});
        each.shape.main_lengths.resize(512);
        std::fill_n(each.shape.main_lengths.begin(), 1u << bits, static_cast<std::uint8_t>(bits));
    }
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        lzx_writer writer(16, 65535);
        writer.block(each.tokens, each.shape);
        writer.block(literals(text)); // its lengths are deltas on the odd ones
        const auto coded = writer.finish();
        EXPECT_TRUE(decoded(coded, 16).bytes == expand(each.tokens) + text);
        expect_agreement_when_damaged(coded, 16, 20, 9);
    }
}

TEST(LzxDecompressor, PadsOddRawBlocksAndPassesEmptyOnesAndEmptyFrames) {
    for (const std::uint32_t size : {1u, 2u, 99u, 100u, 101u}) {
        SCOPED_TRACE(size);
        lzx_writer writer(16, 100);
        const std::string text(size, 'r');
        writer.raw(""), writer.block({}), writer.raw(text, {3, 2, 1});
        writer.raw(""), writer.raw("odd"), writer.block(literals("end"));
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
}

TEST(LzxDecompressor, ByThePublishedRulesTranslationEndsAfter32768Frames) {
    const std::string offsets("\1\0\0\0\1\0\0\0\1\0\0\0", 12), call = "\xE8" + std::string(15, '\0');
    for (const bool published : {false, true}) {
        algorithm::lzx::decompressor decoder(1u << 15);
        if (published)
            decoder.use_published_rules();
        for (unsigned frame = 0; frame <= 32768; ++frame) {
            // A raw block of 16 bytes; in the first frame behind a translation size of 2^20.
            const auto header = frame == 0 ? std::string("\x08\x80\x00\x00\x00\x30\x00\x01", 8)
                                           : std::string("\x00\x60\x00\x02", 4);
            support::memory_input input(header + offsets + call);
            support::memory_output output;
            ASSERT_EQ(decoder.process_block(input, output, header.size() + 28, 16), 16) << frame;
            ASSERT_EQ(output.bytes == call, frame == 0 || (published && frame == 32768)) << frame;
        }
    }
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
            // 0 and whole windows copy the bytes from one window earlier.
            for (auto& token : tokens)
                if (token.length > 1)
                    token.value = token.value % 32768 == 0 ? 32768 : token.value % 32768;
            EXPECT_TRUE(decoded(writer.finish(), 15).bytes == expand(tokens, text));
        }
}

TEST(LzxDecompressor, FailsWithoutWriting) {
    const std::string text = "some text, and some more text, and some text again";
    const auto text_in = [&](const lzx_shape& shape) {
        return [shape, &text](lzx_writer& w) { w.block(literals(text), shape); };
    };
    // A header, and `words` words of the same bits.
    const auto cut_off = [](unsigned type, unsigned words, std::uint32_t bits) {
        return [=](lzx_writer& w) {
            w.header(type, 100);
            for (unsigned i = 0; i < words; ++i)
                w.put(bits, 16);
        };
    };
    std::vector<std::uint8_t> incomplete(256 + 240), full(256 + 240, 2), one_length(249);
    incomplete['s'] = 2;
    one_length[7] = 1;
    const std::pair<const char*, std::function<void(lzx_writer&)>> failures[] = {
        {"block type 0", cut_off(0, 0, 0)},
        {"block type 7", cut_off(7, 0, 0)},
        {"no input at all", [](lzx_writer&) {}},
        {"empty blocks to the end", [](lzx_writer& w) { w.raw(""), w.raw(""), w.block({}); }},
        {"trees cut off", cut_off(1, 1, 0)},
        {"aligned tree cut off", cut_off(2, 0, 0)},
        {"incomplete aligned tree", text_in({.aligned = true, .aligned_lengths = {1, 2, 0, 0, 0, 0, 0, 0}})},
        {"over-full aligned tree", text_in({.aligned = true, .aligned_lengths = {1, 1, 1, 1, 0, 0, 0, 0}})},
        {"incomplete main tree", text_in({.main_lengths = incomplete})},
        {"over-full main tree", text_in({.main_lengths = full})},
        {"incomplete length tree", text_in({.length_lengths = one_length})},
        {"over-full pre-tree", cut_off(1, 100, 0x1111)},
        {"a delta above 16 in a run",
         [](lzx_writer& w) {
             w.header(1, 100);
             for (unsigned i = 0; i < 105; ++i)
                 w.put(i == 4 ? 0x0101 : i == 5 ? 0xC000 : 0, 16); // symbols 17 and 19; a run of 17
         }},
        {"a raw block cut off", cut_off(3, 33, 0)},
    };
    for (const auto& [name, write] : failures) {
        SCOPED_TRACE(name);
        lzx_writer writer(15);
        write(writer);
        auto coded = writer.finish();
        coded.resize(1);
        if (coded[0].size == 0)
            coded[0].size = 100;
        EXPECT_EQ(decoded(coded, 15).results, std::vector<std::int64_t>{-1});
    }
    EXPECT_EQ(decoded(code(15, literals(text), {.aligned = true}), 15).bytes, text) << "the text is sound";
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
    coded = code(15, literals(std::string(2000, 'a')), {.main_lengths = bit_each});
    EXPECT_EQ(decoded(coded, 15).results.back(), 2000);
    coded[0].bytes.resize(coded[0].bytes.size() - 2);
    EXPECT_EQ(decoded(coded, 15).results.back(), -1);
}

TEST(LzxDecompressor, FailsWhereAFrameEndsInsideAMatchOrPassesTheWindow) {
    auto tokens = literals("abcdef");
    tokens.push_back({200, 3});
    auto coded = code(15, tokens);
    for (const std::uint32_t size : {7u, 205u, 32769u, 0xFFFFFFFFu}) {
        coded[0].size = size;
        EXPECT_EQ(decoded(coded, 15).results.back(), -1) << size;
    }
    EXPECT_EQ(decoded(code(15, literals(std::string(40000, 'a')), {}, 65535), 15).results.back(), -1);
    // 65535 bytes in one frame are sound where they fit.
    support::numbers random(5);
    const auto long_tokens = random_tokens(random, 0, 65535, 65533, 65535);
    EXPECT_TRUE(decoded(code(16, long_tokens, {}, 65535), 16).bytes == expand(long_tokens));
}

#include "harbor6/stream/filters.h"

#include "harbor6/stream/endian_input.h"
#include "support/memory_streams.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using support::memory_input, support::memory_output, support::refusal_of, support::seekable_input;

TEST(FilterInput, ForwardsAndKeepsItsPushBackToItself) {
    seekable_input source("abcdef");
    {
        stream::filter_input filter(&source);
        EXPECT_EQ(filter.read(), 'a');
        filter.unread('z');
        EXPECT_EQ(source.tell() - filter.tell(), 1u);
        EXPECT_EQ(filter.read(), 'z');
        EXPECT_FALSE(filter.seek(0)); // although the source could
        EXPECT_EQ(filter.skip(3), 3u);
        stream::direct_input direct(&filter);
        direct.unread("xy", 2);
        EXPECT_EQ(filter.read(), 'x');
        filter.attach(nullptr);
        EXPECT_EQ(direct.read(), 'y');
        EXPECT_EQ(refusal_of([&] { filter.read(); }), "stream::filter_input: no stream is attached");
    }
    EXPECT_EQ(source.skip(9), 2u); // the filter has left it open
}

TEST(FilterOutput, FlushesItselfOnSyncAndTheTargetOnClose) {
    struct : memory_output {
        void flush() override { ++flushes; }
        int flushes = 0;
    } target;
    struct filter : stream::filter_output {
        using filter_output::filter_output;
        void flush() override { ++flushes; }
        int flushes = 0;
    } output(&target);
    output.write(std::string("ab"));
    output.put('c');
    memory_input more("de");
    output.copy_from(more);
    EXPECT_EQ(target.bytes, "abcde");
    EXPECT_TRUE(output.seek(5));
    EXPECT_FALSE(output.seek(4));
    output.sync();
    EXPECT_EQ(std::pair(output.flushes, target.flushes), std::pair(1, 1));
    output.close();
    EXPECT_EQ(std::pair(output.flushes, target.flushes), std::pair(1, 2));
    EXPECT_EQ(refusal_of([&] { output.resize(1); }), "un::implemented: stream::output::resize");
    output.attach(nullptr);
    EXPECT_EQ(refusal_of([&] { output.write("x", 1); }), "stream::filter_output: no stream is attached");
}

TEST(LittleEndianInput, PutsTheLeastByteFirstAndNeedsThemAll) {
    memory_input source("\xF1\x12\x23\x34\xF5\x16\x27\x38\xF9 12345678 \xFF");
    stream::little_endian_input fields(source);
    EXPECT_EQ(fields.read16(), 0x12F1u);
    EXPECT_EQ(fields.read24(), 0xF53423u);
    EXPECT_EQ(fields.read32(), 0xF9382716u);
    fields.read8();
    EXPECT_EQ(fields.read64(), 0x3837363534333231u);
    fields.unread('y'); // reaches the source
    EXPECT_EQ(source.read(), 'y');
    fields.read8();
    EXPECT_EQ(fields.read8(), 0xFF);
    EXPECT_EQ(fields.read8(), -1);
    source.unread("abc", 3);
    EXPECT_EQ(refusal_of([&] { fields.read32(); }), "stream::little_endian_input: unexpected end of stream");
}

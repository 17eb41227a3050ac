#include "harbor6/stream/endian_input.h"
#include "harbor6/stream/filters.h"
#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/nio.h"
#include "harbor6/stream/transform.h"
#include "support/memory_streams.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using support::memory_input;
using support::memory_output;
using support::refusal_of;
using support::seekable_input;

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
}

TEST(FilterOutput, FlushesItselfOnSyncAndTheTargetOnClose) {
    struct counting : memory_output {
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
    EXPECT_EQ(output.flushes * 10 + target.flushes, 11);
    output.close();
    EXPECT_EQ(output.flushes * 10 + target.flushes, 12);
    EXPECT_EQ(refusal_of([&] { output.resize(1); }), "un::implemented: stream::output::resize");
    output.attach(nullptr);
    EXPECT_EQ(refusal_of([&] { output.write("x", 1); }), "stream::filter_output: no stream is attached");
}

TEST(MultiOutput, CountsWhatNoSegmentTakesToo) {
    struct two_bytes : stream::multi_output {
        two_bytes() { segment_size = 2, attach(&target); }
        memory_output target;
    } output;
    output.write("abc", 3);
    EXPECT_EQ(std::pair(output.tell(), output.size()), (std::pair<std::uint64_t, std::uint64_t>(3, -1)));
}

TEST(Copying, MovesWhatIsAskedForOrThere) {
    for (const unsigned buffer : {0u, 1u, 4u, 100u}) {
        seekable_input source("0123456789");
        memory_output target;
        stream::copier copier(buffer);
        EXPECT_EQ(copier.process(source, target, 3), 3u);
        EXPECT_EQ(nio::skip(source, 2, buffer), 2u);
        EXPECT_EQ(nio::copy(source, target, 2, buffer), 2u);
        EXPECT_EQ(copier.process(source, target), 3u);
        EXPECT_EQ(copier.process(source, target), 0u);
        EXPECT_EQ(nio::copy(source, target, ~std::uint64_t{0}, buffer), 0u);
        EXPECT_EQ(target.bytes, "01256789") << buffer;
    }
}

TEST(RandomStreams, StepBackInTheSource) {
    seekable_input source("abcdef");
    source.skip(4);
    source.unread('z');
    EXPECT_EQ(source.read(), 'd'); // the source's byte, not the one given
    source.unread("xyz", 3);
    EXPECT_EQ(source.tell(), 1u);
    EXPECT_EQ(source.get(), 'b');
}

#include "codec/deflate/flate_adaptor.h"

#include "support/deflate_streams.h"
#include "support/memory_streams.h"
#include "support/refusal.h"
#include "support/zlib_streams.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using algorithm::flate_adaptor::decompressor, deflate_streams::bit_writer, support::refusal_of,
    zlib_streams::compress;

/// Fails behind 'a': length symbol 286.
const std::string broken = bit_writer().field(1, 1).field(1, 2).fixed('a').fixed(286).bytes;

/// Far more than the pipe holds, so that its writer waits for a reader.
const std::string big(1'000'000, 'z');

struct full_output : support::memory_output {
    using memory_output::write;
    void write(const char*, unsigned) override { throw std::runtime_error("disk full"); }
};

} // namespace

TEST(FlateAdaptor, ReadsBlockAfterBlockInEveryWay) {
    const std::string block = compress("hello, world", 6);
    support::seekable_input in("head" + block + compress("", 6) + broken + compress("next", 6));
    in.skip(4);
    decompressor decoder(in, 15, true);
    EXPECT_EQ(decoder.size(), in.size()) << "the compressed stream's";
    decoder.start();
    decoder.start(); // no second worker
    char buffer[8];
    EXPECT_EQ(decoder.read(), 'h');
    EXPECT_EQ(decoder.read(buffer, 4) + decoder.skip(2), 6u);
    EXPECT_EQ(decoder.tell(), 7u);
    EXPECT_EQ(std::string(buffer, decoder.read(buffer, 8)), "world");
    EXPECT_EQ(decoder.read(), -1);
    decoder.finish();
    decoder.finish();
    EXPECT_EQ(in.tell(), 4 + block.size());
    support::memory_output out;
    for (const auto* const failure : {"", "bad deflate length code"}) { // a block of nothing, then broken
        decoder.start();
        EXPECT_EQ(decoder.copy_to(out), 0u);
        EXPECT_EQ(refusal_of([&] { decoder.finish(); }), failure);
    }
    decoder.finish();
    in.seek(in.size() - compress("next", 6).size());
    decoder.start();
    EXPECT_EQ(decoder.copy_to(out), 4u);
    decoder.finish();
    EXPECT_EQ(out.bytes, "next");
    EXPECT_EQ(decoder.tell(), 17u) << "the look beyond the end of the first block counts";
}

TEST(FlateAdaptor, WindsUpWhateverItsStateIs) {
    char byte;
    support::seekable_input in(compress(big, 6));
    decompressor never_started(in, 15, true);
    EXPECT_EQ(never_started.read(&byte, 1), 0u) << "an end, not a wait";
    never_started.finish();
    EXPECT_EQ(in.tell(), 0u);
    decompressor half_read(in, 15, true);
    half_read.start();
    half_read.read(&byte, 1);
    half_read.finish();
    EXPECT_EQ(in.tell(), in.size()) << "the worker goes on to the end of its stream";
    in.seek(0);
    {
        decompressor destroyed(in, 15, true);
        destroyed.start();
        destroyed.read(&byte, 1);
    }
    support::seekable_input bad(broken);
    decompressor failed(bad, 15, true);
    failed.start();
}

TEST(FlateAdaptor, CopiesAWholeRunOrItsRest) {
    for (const unsigned read_before : {0u, 1u, 70'000u}) {
        SCOPED_TRACE(read_before);
        support::seekable_input in(compress(big, 6) + compress("next", 6));
        support::memory_output out;
        decompressor decoder(in, 15, true);
        EXPECT_EQ(decoder.copy_to(out), 0u) << "not started";
        decoder.start();
        std::string begin(read_before, '\0');
        EXPECT_EQ(decoder.read(begin.data(), read_before), read_before);
        EXPECT_EQ(decoder.copy_to(out), big.size() - read_before);
        EXPECT_EQ(decoder.copy_to(out), 0u);
        EXPECT_EQ(decoder.tell(), big.size());
        decoder.finish();
        EXPECT_EQ(begin + out.bytes, big);
        decoder.start();
        decoder.finish(); // a run without a reader
        EXPECT_EQ(in.tell(), in.size());
    }
}

TEST(FlateAdaptor, AFailedWriteEndsTheRunAndIsTheOneTold) {
    // The second run has a failure of its own.
    bit_writer fails_too = bit_writer().field(1, 1).field(1, 2).fixed('z');
    for (unsigned i = 0; i < 2000; ++i)
        fails_too.fixed(285).fixed_distance(0);
    fails_too.fixed(286);
    for (const std::string& source : {compress(big, 6), fails_too.bytes}) {
        for (const bool whole : {true, false}) {
            support::seekable_input in(source);
            full_output out;
            EXPECT_EQ(refusal_of([&] {
                          decompressor decoder(in, 15, true);
                          decoder.start();
                          if (!whole)
                              decoder.read();
                          decoder.copy_to(out);
                          decoder.finish();
                      }),
                      "disk full");
            EXPECT_EQ(in.tell(), in.size());
        }
    }
}

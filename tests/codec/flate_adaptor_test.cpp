#include "codec/flate_adaptor.h"

#include "outside/groundwork/exception.h"
#include "support/deflate_streams.h"
#include "support/job.h"
#include "support/memory_streams.h"
#include "support/zlib_streams.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace {

using algorithm::flate_adaptor::decompressor;
using deflate_streams::bit_writer;
using support::text_of;
using zlib_streams::compress, zlib_streams::words;

/// A stream that fails behind 'a': length symbol 286.
std::string broken() {
    return bit_writer().field(1, 1).field(1, 2).fixed('a').fixed(286).bytes;
}

/// Far more than the pipe holds, so that its writer waits for a reader.
const std::string& big() {
    static const std::string data(1'000'000, 'z');
    return data;
}

/// Takes so many bytes and no more.
class full_output : public support::memory_output {
public:
    using memory_output::write;
    void write(const char* buffer, unsigned length) override {
        if (bytes.size() + length > 100'000)
            throw std::runtime_error("disk full");
        memory_output::write(buffer, length);
    }
};

} // namespace

TEST(FlateAdaptor, DecodesTheBlocksOfAFolderOneAfterTheOther) {
    const std::string data = words(200000);
    std::string source;
    std::vector<std::size_t> ends;
    for (const auto& block : zlib_streams::compress_blocks(data, 6)) {
        source += "head" + block;
        ends.push_back(source.size());
    }
    support::seekable_input in(source);
    support::memory_output out;
    decompressor decoder(in, 15, true);
    EXPECT_EQ(decoder.size(), source.size()) << "the compressed stream's";
    for (std::size_t i = 0; i < ends.size(); ++i) {
        in.skip(4);
        decoder.start();
        decoder.start(); // no second worker
        EXPECT_EQ(decoder.copy_to(out), std::min<std::size_t>(32768, data.size() - i * 32768));
        decoder.finish();
        decoder.finish();
        EXPECT_EQ(in.tell(), ends[i]);
        EXPECT_EQ(decoder.tell(), out.bytes.size());
    }
    EXPECT_TRUE(out.bytes == data);
}

TEST(FlateAdaptor, ReadsInEveryWay) {
    support::seekable_input in(compress("hello, world", 6) + compress("", 6));
    decompressor decoder(in, 15, true);
    decoder.start();
    char buffer[8];
    EXPECT_EQ(decoder.read(), 'h');
    EXPECT_EQ(decoder.read(buffer, 4), 4u);
    EXPECT_EQ(decoder.skip(2), 2u);
    EXPECT_EQ(decoder.tell(), 7u);
    EXPECT_EQ(decoder.read(buffer, 8), 5u);
    EXPECT_EQ(std::string(buffer, 5), "world");
    EXPECT_EQ(decoder.read(), -1);
    decoder.finish();
    decoder.start();
    support::memory_output out;
    EXPECT_EQ(decoder.copy_to(out), 0u) << "a block of nothing";
    decoder.finish();
}

TEST(FlateAdaptor, AFailureComesFromFinishAndTheNextBlockStillRuns) {
    support::seekable_input in(broken() + compress("next", 6));
    support::memory_output out;
    decompressor decoder(in, 15, true);
    decoder.start();
    EXPECT_EQ(decoder.copy_to(out), 0u);
    EXPECT_EQ(text_of([&] { decoder.finish(); }), "bad deflate length code");
    decoder.finish();
    in.seek(broken().size());
    decoder.start();
    decoder.copy_to(out);
    decoder.finish();
    EXPECT_EQ(out.bytes, "next");
}

TEST(FlateAdaptor, WindsUpWhateverItsStateIs) {
    const std::string source = compress(big(), 6);
    char byte;
    {
        support::seekable_input in(source);
        decompressor never_started(in, 15, true);
        EXPECT_EQ(never_started.read(&byte, 1), 0u) << "an end, not a wait";
        decompressor finished_only(in, 15, true);
        finished_only.finish();
        EXPECT_EQ(in.tell(), 0u);
    }
    {
        support::seekable_input in(source);
        decompressor half_read(in, 15, true);
        half_read.start();
        half_read.read(&byte, 1);
        half_read.finish();
        EXPECT_EQ(in.tell(), source.size()) << "the worker goes on to the end of its stream";
        decompressor destroyed(in, 15, true);
        in.seek(0);
        destroyed.start();
        destroyed.read(&byte, 1);
    }
    support::seekable_input in(broken());
    decompressor failed(in, 15, true);
    failed.start();
}

TEST(FlateAdaptor, AFailedWriteWindsTheWorkerUpAndIsTheOneTold) {
    // The second worker has a failure of its own by the time it is joined.
    bit_writer fails_too = bit_writer().field(1, 1).field(1, 2).fixed('z');
    for (unsigned i = 0; i < 2000; ++i)
        fails_too.fixed(285).fixed_distance(0);
    fails_too.fixed(286);
    for (const std::string& source : {compress(big(), 6), fails_too.bytes}) {
        support::seekable_input in(source);
        full_output out;
        EXPECT_EQ(text_of([&] {
                      decompressor decoder(in, 15, true);
                      decoder.start();
                      decoder.copy_to(out);
                      decoder.finish();
                  }),
                  "disk full");
    }
}

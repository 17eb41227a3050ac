#include "harbor6/concurrency/buffered_input.h"

#include "support/memory_streams.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

namespace {

/// Can seek unless told otherwise, and can grow.
struct memory : support::seekable_input {
    using seekable_input::seekable_input;
    using seekable_input::text;

    bool seek(std::uint64_t value) override { return seekable && seekable_input::seek(value - shift); }
    std::uint64_t _tell() const override { return seekable_input::_tell() + shift; }
    void set_tell(std::uint64_t value) override { shift += value - tell(); }

    std::uint64_t shift = 0;
    bool seekable = true;
};

} // namespace

TEST(BufferedInput, ReturnsTheReadAheadAndKeepsBothPositionsInStep) {
    memory source("abcdefghijklmnop");
    nio::buffered_input in(source, 8);
    source.seekable = false;
    in.finish(); // nothing is buffered, so nothing to return
    EXPECT_EQ(in.get(), 'a');
    EXPECT_EQ(support::refusal_of([&] { in.finish(); }), "buffered_input failed to yield unused data");
    EXPECT_EQ(in.get(), 'b') << "a refused seek loses nothing";
    source.seekable = true;
    in.finish();
    EXPECT_EQ(source.tell(), 2u);
    EXPECT_EQ(in.get(), 'c');
    EXPECT_TRUE(in.seek(9));
    EXPECT_EQ(in.get(), 'j');
    source.seek(5);
    in.start(); // drops the buffer
    EXPECT_EQ(in.get(), 'f');
    in.set_tell(1006);
    EXPECT_EQ(in.tell(), 1006u);
    EXPECT_EQ(source.tell(), 1013u);
    in.finish();
    EXPECT_EQ(source.tell(), 1006u);
    char rest[20];
    EXPECT_EQ(std::string(rest, in.read(rest, 20)), "ghijklmnop");
    EXPECT_EQ(in.get(), -1);
    source.text += 'y'; // the end isn't remembered
    EXPECT_EQ(in.get(), 'y');
}

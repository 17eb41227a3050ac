#include "harbor6/concurrency/buffered_input.h"

#include "support/refusal.h"

#include <gtest/gtest.h>
#include <string>

namespace {

/// Memory that can seek unless told otherwise, and can grow.
struct memory : nio::input {
    unsigned read(char* buffer, unsigned length) override {
        const auto count = bytes.copy(buffer, length, next);
        next += count;
        return static_cast<unsigned>(count);
    }
    std::uint64_t tell() const override { return next + shift; }
    void set_tell(std::uint64_t value) override { shift = value - next; }
    bool seek(std::uint64_t value) override {
        if (seekable)
            next = value - shift;
        return seekable;
    }

    std::string bytes = "abcdefghijklmnop";
    std::uint64_t next = 0, shift = 0;
    bool seekable = true;
};

} // namespace

TEST(BufferedInput, ReturnsTheReadAheadAndKeepsBothPositionsInStep) {
    memory source;
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
    source.bytes += 'y'; // the end isn't remembered
    EXPECT_EQ(in.get(), 'y');
}

#include "concurrency/buffered_input.h"

#include "support/refusal.h"

#include <gtest/gtest.h>
#include <string>

namespace {

/// Memory that can be sought unless told otherwise, and grows.
struct memory : nio::input {
    unsigned read(char* buffer, unsigned length) override {
        const auto came = static_cast<unsigned>(bytes.copy(buffer, length, next));
        next += came;
        return came;
    }
    std::uint64_t tell() const override { return next + shift; }
    void set_tell(std::uint64_t value) override { shift = value - next; }
    bool seek(std::uint64_t value) override {
        ++seeks;
        if (seekable)
            next = value - shift;
        return seekable;
    }

    std::string bytes = "abcdefghijklmnop";
    std::uint64_t next = 0;
    std::uint64_t shift = 0;
    bool seekable = true;
    int seeks = 0;
};

struct BufferedInput : testing::Test {
    std::string read(unsigned length) {
        std::string text(length, '?');
        text.resize(in.read(text.data(), length));
        return text;
    }

    memory source;
    nio::buffered_input in{source, 8};
};

} // namespace

TEST_F(BufferedInput, FinishGivesTheReadAheadBack) {
    source.seekable = false;
    in.finish();
    EXPECT_EQ(source.seeks, 0) << "nothing buffered, nothing to give back";
    read(3);
    EXPECT_EQ(support::refusal_of([&] { in.finish(); }), "buffered_input failed to yield unused data");
    EXPECT_EQ(in.get(), 'd') << "a refusal loses nothing";
    source.seekable = true;
    in.finish();
    EXPECT_EQ(source.tell(), 4u);
    EXPECT_EQ(in.tell(), 4u);
    EXPECT_TRUE(in.seek(9));
    EXPECT_EQ(in.get(), 'j');
}

TEST_F(BufferedInput, StartForgetsAndRenumberingKeepsBothCountsInStep) {
    in.get();
    source.seek(5);
    in.start();
    EXPECT_EQ(in.get(), 'f');
    in.set_tell(1006);
    EXPECT_EQ(in.tell(), 1006u);
    EXPECT_EQ(source.tell(), 1013u);
    in.finish();
    EXPECT_EQ(source.tell(), 1006u);
    EXPECT_EQ(read(20), "ghijklmnop");
    EXPECT_EQ(in.get(), -1);
    source.bytes += 'y'; // the end is asked for each time
    EXPECT_EQ(in.get(), 'y');
}

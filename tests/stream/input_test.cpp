#include "stream/array_input.h"

#include <gtest/gtest.h>

TEST(Input, DeliversPushedBackBytesFirstToEveryKindOfRead) {
    const un::array<char> bytes("abcdef");
    stream::array_input in(bytes, 0);
    char buffer[8];
    EXPECT_EQ(in.read(buffer, 4), 4u);
    in.unread("cd", 2);
    in.unread('b');
    EXPECT_EQ(in.tell(), 1u);
    EXPECT_EQ(in.read(), 'b');
    EXPECT_EQ(in.skip(1), 1u);
    EXPECT_EQ(in.read(buffer, 8), 3u);
    EXPECT_EQ(std::string(buffer, 3), "def");
    EXPECT_EQ(in.tell(), 6u);
    EXPECT_EQ(in.read(), -1);
}

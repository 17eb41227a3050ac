#include "harbor6/stream/input.h"

#include "support/memory_streams.h"

#include <gtest/gtest.h>
#include <tuple>

namespace {

/// Implements only what stream::input leaves abstract.
struct byte_input : stream::input {
    int _read() override { return next < text.size() ? static_cast<unsigned char>(text[next++]) : -1; }
    std::uint64_t _tell() const override { return next; }

    std::string text = "abcdef";
    std::size_t next = 0;
};

/// The result of one operation, then the bytes that it stored.
std::string take(stream::input& source, const std::string& operation, unsigned length) {
    if (operation == "single")
        return {static_cast<char>(source.read())};
    if (operation == "skip")
        return std::to_string(source.skip(length));
    std::string bytes(length, '.');
    support::memory_output target;
    return operation == "bulk" ? std::to_string(source.read(bytes.data(), length)) + bytes
                               : std::to_string(source.copy_to(target)) + target.bytes;
}

TEST(Input, DeliversPushedBackBytesFirstInEveryKindOfRead) {
    const std::tuple<const char*, unsigned, const char*, std::uint64_t, const char*> cases[] = {
        {"single", 1, "X", 1, "5Ycdef"},  {"bulk", 1, "1X", 1, "5Ycdef"}, {"bulk", 4, "4XYcd", 4, "2ef"},
        {"bulk", 8, "6XYcdef..", 6, "0"}, {"skip", 1, "1", 1, "5Ycdef"},  {"skip", 3, "3", 3, "3def"},
        {"skip", 9, "6", 6, "0"},         {"copy", 0, "6XYcdef", 6, "0"},
    };
    for (const auto& [operation, length, taken, position, rest] : cases) {
        SCOPED_TRACE(operation + std::to_string(length));
        byte_input source;
        source.skip(2);
        source.unread("XY", 2);
        EXPECT_EQ(take(source, operation, length), taken);
        EXPECT_EQ(source.tell(), position);
        EXPECT_EQ(take(source, "copy", 0), rest);
    }
}

TEST(RandomInput, StepBackInTheSource) {
    support::seekable_input source("abcdef");
    EXPECT_EQ(source.skip(4), 4u);
    source.unread('z');
    EXPECT_EQ(source.read(), 'd'); // the source's byte, not the one given
    source.unread("xyz", 3);
    EXPECT_EQ(source.tell(), 1u);
    EXPECT_EQ(source.get(), 'b');
    EXPECT_EQ(source.skip(9), 4u); // as many as remain
    EXPECT_EQ(source.skip(1), 0u);
}

} // namespace

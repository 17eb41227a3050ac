#include "harbor6/stream/output.h"

#include "harbor6/stream/multi_output.h"
#include "support/memory_streams.h"

#include <gtest/gtest.h>

TEST(InfiniteOutput, CountsWhatIsWrittenInEveryWay) {
    stream::infinite_output sink;
    sink.write("abc", 3);
    EXPECT_EQ(sink.tell(), 3u);
    sink.write('d');
    EXPECT_EQ(sink.tell(), 4u);
    support::memory_input source("efghij");
    sink.copy_from(source);
    EXPECT_EQ(sink.tell(), 10u);
    sink.resize(7);
    EXPECT_EQ(sink.size(), 7u);
}

TEST(MultiOutput, CountsWhatNoSegmentTakesToo) {
    struct two_bytes : stream::multi_output {
        two_bytes() { segment_size = 2, attach(&target); }
        support::memory_output target;
    } output;
    output.write("abc", 3);
    EXPECT_EQ(output.target.bytes, "ab");
    EXPECT_EQ(std::pair(output.tell(), output.size()), (std::pair<std::uint64_t, std::uint64_t>(3, -1)));
}

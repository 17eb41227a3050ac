#include "harbor6/stream/output.h"

#include "harbor6/stream/multi_output.h"
#include "harbor6/stream/transform.h"
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

TEST(Copying, MovesWhatIsAskedForOrThere) {
    for (const unsigned buffer : {0u, 1u, 4u, 100u}) {
        SCOPED_TRACE(buffer);
        support::seekable_input source("0123456789");
        support::memory_output target;
        stream::copier copier(buffer);
        EXPECT_EQ(copier.process(source, target, 3), 3u);
        EXPECT_EQ(nio::skip(source, 2, buffer), 2u);
        EXPECT_EQ(nio::copy(source, target, 2, buffer), 2u);
        EXPECT_EQ(copier.process(source, target), 3u);
        EXPECT_EQ(copier.process(source, target), 0u);
        EXPECT_EQ(nio::copy(source, target, ~std::uint64_t{0}, buffer), 0u);
        EXPECT_EQ(target.bytes, "01256789");
    }
}

#include "harbor6/stream/transform.h"

#include "support/memory_streams.h"

#include <gtest/gtest.h>

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

#include "format/cab/checksum.h"
#include "support/memory_streams.h"

#include <gtest/gtest.h>

using format::cab::checksum;

TEST(Checksum, GivesTheSameWordByWordAsByteByByteFromAnyShiftAndAddress) {
    std::string bytes(400, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i * i * 31 + i);
    for (unsigned begun = 0; begun < 4; ++begun) {
        for (unsigned from = 0; from < 9; ++from) {
            for (unsigned length = 0; length < 300; ++length) {
                checksum bulk, single;
                bulk.update(bytes.data(), begun);
                for (unsigned i = 0; i < begun; ++i)
                    single.update(bytes[i]);
                bulk.update(bytes.data() + from, length);
                for (unsigned i = 0; i < length; ++i)
                    single.update(bytes[from + i]);
                ASSERT_EQ(bulk.value, single.value) << begun << ' ' << from << ' ' << length;
                ASSERT_EQ(bulk.shift, single.shift) << begun << ' ' << from << ' ' << length;
            }
        }
    }
}

TEST(Checksum, CountsWhatPassesAFilterWhileItIsOn) {
    support::memory_input input("\x01\x02\x03\x84\x05\x06\x07\x08\x09");
    checksum sum;
    algorithm::digest_input counted(&input, &sum);
    sum.enabled = false;
    EXPECT_EQ(counted.read(), 1);
    EXPECT_EQ(counted.skip(1), 1u);
    EXPECT_EQ(sum.value, 0u);
    sum.reset();
    char two[2];
    EXPECT_EQ(counted.read(two, 2), 2u);
    EXPECT_EQ(counted.skip(2), 2u);
    EXPECT_EQ(sum.value, 0x06058403u);
    EXPECT_EQ(counted.skip(9), 3u);
    EXPECT_EQ(sum.value, 0x060C8C04u);
    EXPECT_EQ(sum.shift, 24u);
}

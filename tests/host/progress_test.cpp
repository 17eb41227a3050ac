#include "host/progress.h"

#include "host/report.h"

#include <gtest/gtest.h>

TEST(Progress, SaysHowFarHowFastAndHowLong) {
    using host::progress_line;
    EXPECT_EQ(progress_line(50000000, 200000000, 10, "x.cab: a", 79), " 25%  5.0 MB/s  0:30 left  x.cab: a");
    EXPECT_EQ(progress_line(0, 200, 0, "x", 79), "  0%  0 B/s  x");
    EXPECT_EQ(progress_line(3, 2, 1, "x", 79), "100%  3 B/s  x");
    EXPECT_EQ(progress_line(1, 4000, 1, "x", 79), "  0%  1 B/s  1:06:39 left  x");
    EXPECT_EQ(progress_line(1500, host::progress::unknown, 1, "\xC3\xA4\xC3\xB6", 19),
              "1.5 KB  1.5 KB/s  \xC3\xA4");
}

TEST(Report, WritesSizesForPeople) {
    const std::pair<std::uint64_t, const char*> cases[] = {{0, "0 B"},
                                                           {999, "999 B"},
                                                           {1000, "1.0 KB"},
                                                           {9949, "9.9 KB"},
                                                           {9950, "10 KB"},
                                                           {99499, "99 KB"},
                                                           {999499, "999 KB"},
                                                           {999500, "1.0 MB"},
                                                           {4294967295, "4.3 GB"},
                                                           {~std::uint64_t{0}, "18 EB"}};
    for (const auto& [bytes, text] : cases)
        EXPECT_EQ(host::human_size(bytes), text) << bytes;
}

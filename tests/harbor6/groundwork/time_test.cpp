#include "harbor6/groundwork/time.h"

#include <gtest/gtest.h>
#include <tuple>

TEST(Time, SetsInvalidFieldsToTheNearestValidOnes) {
    // Date: year - 1980, month, day in 7, 4, 5 bits; time: hour, minute, second / 2 in 5, 6, 5.
    const std::tuple<const char*, unsigned, unsigned, any::time> cases[] = {
        {"a leap day", 0x305D, 0x6CB5, {{2004, 2, 29, 13, 37, 42}}},
        {"all zeros", 0, 0, {{1980, 1, 1, 0, 0, 0}}},
        {"all ones", 0xFFFF, 0xFFFF, {{2107, 12, 31, 23, 59, 58}}},
        {"30 February, 24 hours", 20 << 9 | 2 << 5 | 30, 24 << 11, {{2000, 2, 29, 23, 0, 0}}},
        {"29 February of a common year, 60 seconds",
         21 << 9 | 2 << 5 | 29,
         60 << 5 | 30,
         {{2001, 2, 28, 0, 59, 58}}},
        {"29 February 2100", 120 << 9 | 2 << 5 | 29, 29, {{2100, 2, 28, 0, 0, 58}}},
        {"month 13", 1 << 9 | 13 << 5 | 31, 0, {{1981, 12, 31, 0, 0, 0}}},
        {"31 April", 1 << 9 | 4 << 5 | 31, 0, {{1981, 4, 30, 0, 0, 0}}},
    };
    for (const auto& [name, date, time, meant] : cases) {
        SCOPED_TRACE(name);
        fs::time set;
        set.set_dos(static_cast<std::uint16_t>(date), static_cast<std::uint16_t>(time));
        EXPECT_EQ(any::time(set), meant);
    }
}

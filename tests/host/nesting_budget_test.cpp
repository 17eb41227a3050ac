#include "host/nesting_budget.h"

#include "harbor6/groundwork/exception.h"

#include <gtest/gtest.h>

namespace {

using host::nesting_budget;

TEST(NestingBudget, EndsAtTheFirstExcess) {
    const struct {
        std::uint64_t items, bytes; ///< the most that an archive of 800 bytes may take
        std::uint64_t more_items, more_bytes;
    } cases[] = {
        {20100, (1u << 30) + 1600000, 1, 0},
        {20100, (1u << 30) + 1600000, 0, 1},
    };
    for (const auto& each : cases) {
        nesting_budget budget(800);
        EXPECT_TRUE(budget.covers(800));
        budget.take(each.items, each.bytes);
        EXPECT_TRUE(budget.covers(0));
        EXPECT_FALSE(budget.covers(1));
        EXPECT_THROW(budget.take(each.more_items, each.more_bytes), un::exception);
    }
    nesting_budget spent(0);
    EXPECT_THROW(spent.take(20001, 0), un::exception);
    EXPECT_THROW(spent.take(0, 1), un::exception) << "nothing is left after an excess";
    nesting_budget unlimited;
    unlimited.take(1u << 20, std::uint64_t{1} << 60);
    EXPECT_TRUE(unlimited.covers(std::uint64_t{1} << 40));
    EXPECT_TRUE(nesting_budget(~std::uint64_t{0}).covers(std::uint64_t{1} << 40));
}

} // namespace

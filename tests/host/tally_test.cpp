#include "host/tally.h"

#include "host/report.h"
#include "support/memory_host.h"

#include <gtest/gtest.h>

TEST(Tally, KeepsTheAttributesThatAreAskedFor) {
    support::memory_host memory;
    host::console out;
    host::report log(out, false);
    host::tally counts{memory.plain, log, {"uncompressedSize", "symLink"}};
    pattern::AcquiredPtr(new host::TallyFolder(counts))->addItem(*memory.source("a", "123"), false);
    EXPECT_TRUE(log.is_sound());
    ASSERT_EQ(counts.entries.size(), 1u);
    EXPECT_EQ(counts.entries[0].path + std::to_string(counts.entries[0].size), "a3");
    EXPECT_EQ(std::get<std::int64_t>(counts.entries[0].attributes["uncompressedSize"]), 3);
    EXPECT_EQ(counts.entries[0].attributes.count("symLink"), 0u);
}

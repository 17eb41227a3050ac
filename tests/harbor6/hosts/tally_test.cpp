#include "harbor6/hosts/tally.h"

#include "host/report.h"
#include "support/memory_host.h"

#include <gtest/gtest.h>

TEST(Tally, KeepsTheAttributesThatAreAskedFor) {
    support::memory_host memory;
    host::console out;
    host::report log(out, {});
    host::tally counts{memory.plain, log, {"uncompressedSize", "symLink"}};
    std::vector<host::tally_entry> entries;
    counts.counted = [&](const host::tally_entry& entry) { entries.push_back(entry); };
    pattern::AcquiredPtr(new host::TallyFolder(counts))->addItem(*memory.source("a", "123"), false);
    EXPECT_TRUE(log.is_sound());
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].path + std::to_string(entries[0].size), "a3");
    EXPECT_EQ(std::get<std::int64_t>(entries[0].attributes["uncompressedSize"]), 3);
    EXPECT_EQ(entries[0].attributes.count("symLink"), 0u);
}

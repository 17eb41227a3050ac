#include "host/selection.h"

#include <gtest/gtest.h>
#include <sstream>

namespace {

TEST(Selection, PatternsNameFilesAndFolders) {
    const struct {
        const char *path, *wanted_by, *not_by; ///< patterns between blanks
    } cases[] = {
        {"d/e/a.txt", "*.txt d e d/ d/e d/* d/**.txt", "d/*.txt e/a.txt"},
        {"a.txt", "a.txt ?.txt", "A.txt"},
        {"d/a.txt", "a.txt", ""},
        {"a.txt.gz", "", "*.txt"},
        {"d/e", "**", "d?e"},
        {"x", "*", ""},
        {"xaxbxbxc", "*a*b*c", ""},
        {"xaxcxb", "", "*a*b*c"},
        {"ab/ab/xc", "**b/*c", ""},
    };
    for (const auto& each : cases)
        for (const bool wanted : {true, false}) {
            std::istringstream patterns(wanted ? each.wanted_by : each.not_by);
            for (std::string pattern; patterns >> pattern;) {
                host::selection selected({pattern});
                EXPECT_EQ(selected.wants(each.path), wanted) << pattern << " on " << each.path;
                EXPECT_EQ(selected.take_unused().empty(), wanted);
            }
        }
    EXPECT_FALSE(host::selection({""}).wants("x"));
    host::selection all;
    EXPECT_TRUE(all.everything() && all.wants("x") && all.take_unused().empty());
}

TEST(Selection, ManyStarsCostLittle) {
    std::string pattern;
    for (int i = 0; i < 60; ++i)
        pattern += "*a";
    EXPECT_FALSE(host::matches(pattern + "**b", std::string(5000, 'a')));
}

} // namespace

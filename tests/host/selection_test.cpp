#include "host/selection.h"

#include <gtest/gtest.h>

namespace {

TEST(Selection, PatternsNameFilesAndFolders) {
    struct {
        const char* pattern;
        const char* path;
        bool wanted;
    } const cases[] = {
        {"a.txt", "a.txt", true},
        {"a.txt", "d/a.txt", true},
        {"a.txt", "A.txt", false},
        {"*.txt", "d/e/a.txt", true},
        {"*.txt", "a.txt.gz", false},
        {"d", "d/e/a.txt", true},
        {"e", "d/e/a.txt", true},
        {"d/", "d/e/a.txt", true},
        {"d/e", "d/e/a.txt", true},
        {"d/*", "d/e/a.txt", true},
        {"d/*.txt", "d/e/a.txt", false},
        {"d/**.txt", "d/e/a.txt", true},
        {"e/a.txt", "d/e/a.txt", false},
        {"?.txt", "a.txt", true},
        {"d?e", "d/e", false},
        {"**", "d/e", true},
        {"*", "x", true},
        {"*a*b*c", "xaxbxbxc", true},
        {"*a*b*c", "xaxcxb", false},
        {"**b/*c", "ab/ab/xc", true},
        {"", "x", false},
    };
    for (const auto& each : cases) {
        host::selection wanted({each.pattern});
        EXPECT_EQ(wanted.wants(each.path), each.wanted) << each.pattern << " on " << each.path;
        EXPECT_EQ(wanted.take_unused().empty(), each.wanted);
    }
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

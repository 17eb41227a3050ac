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
        {"a.txt", "**/*.txt **/a.txt **/**/a.* [a-c].txt [!b].txt [^-]?txt ?[.]txt",
         "**/b.txt */*.txt [b-z]* [!a]*"},
        {"d/e/a.txt", "**/*.txt **/e **/e/* d/**/a.txt d/**/e/*.txt", "**/d/a.txt d/**/a xd/**"},
        {"[a]-]b", "[[]a* *[]]b ?a* [!]-]* *-]b", "[a]* [[-^][]"},
        {"\xC3\xA4\xE2\x82\xAC", "?? [\xC3\xA0-\xC3\xBC]* [!a]?", "? ???? [a-z]*"},
        {"[ab", "[ab *[ab", "[ab] b"},
    };
    for (const auto& each : cases)
        for (const bool wanted : {true, false}) {
            std::istringstream patterns(wanted ? each.wanted_by : each.not_by);
            for (std::string pattern; patterns >> pattern;) {
                host::pattern_set selected({"never", pattern}, false);
                EXPECT_EQ(selected.match(each.path), wanted) << pattern << " on " << each.path;
                EXPECT_EQ(selected.unused().size(), wanted ? 1u : 2u);
            }
        }
    EXPECT_FALSE(host::pattern_set({""}, false).match("x"));
    host::selection all;
    EXPECT_TRUE(all.everything() && all.wants("x"));
    host::selection some{{{"D/*.txt"}, true}, {{"*\xC3\x84*"}, true}};
    EXPECT_TRUE(some.wants("d/a.TXT") && !some.wants("d/\xC3\xA4.txt") && !some.wants("a.txt"));
}

TEST(Selection, ManyStarsAndManyPatternsCostLittle) {
    std::vector<std::string> names, stars;
    for (int i = 0; i < 3000; ++i) {
        names.push_back(std::to_string(i) + (i % 3 == 0 ? ".txt" : i % 3 == 1 ? ".t[x]t" : "/**"));
        stars.push_back("**/*." + std::to_string(i));
    }
    host::selection many{{names, false}, {stars, true}};
    int wanted = 0;
    for (int i = 0; i < 65000; ++i)
        wanted += many.wants("d/e/" + std::to_string(i) + ".txt");
    EXPECT_EQ(wanted, 2000);
    std::string pattern;
    for (int i = 0; i < 60; ++i)
        pattern += "*a";
    EXPECT_FALSE(host::matches(pattern + "**b", std::string(5000, 'a')));
}

} // namespace

#include "support/program.h"

#include <sstream>

namespace {

using support::cabinet;
using support::write_file;

struct List : support::program {};

TEST_F(List, ShowsWhatTheHeadSays) {
    cabinet made;
    made.file("a.txt", "123").file("..\\d\\\xE4\n", "");
    made.folder(support::mszip)
        .file({.name = "d\\e\\b", .size = 4000000000, .folder_index = 1, .attributes = 0x61});
    made.file({.name = "d\\a.txt", .size = 1000, .folder_offset = 4000000000, .folder_index = 1, .date = 0});
    save(made.block({.payload = "damaged"}));
    const std::string head = "      Size  Modified             Attr   Name\n";
    const std::string a = "         3  2004-02-29 13:37:42  ---a-  a.txt\n";
    const std::string json = "\",\"attributes\":[\"archive\"],\"method\":\"stored\",\"folder\":0,\"offset\":";
    const struct {
        std::string arguments, output;
    } cases[] = {
        {"list x.cab", head + a +
                           "         0  2004-02-29 13:37:42  ---a-  ../d/\xC3\xA4\\x0a -> d/\xC3\xA4\\x0a\n"
                           "4000000000  2004-02-29 13:37:42  r--ax  d/e/b\n"
                           "      1000  1980-01-01 13:37:42  ---a-  d/a.txt\n"
                           "4000001003  4 files\n"},
        {"l -hq --long x.cab --exclude 'd/[!a]*'",
         "       3 B  2004-02-29 13:37:42  ---a-  stored        0           0  a.txt\n"
         "    1.0 KB  1980-01-01 13:37:42  ---a-  MSZIP         1  4000000000  d/a.txt\n"},
        {"list --tree x.cab -- '**/?' a.txt", "x.cab\n├── a.txt\n└── d/\n    ├── a.txt\n    ├── e/\n"
                                              "    │   └── b\n    └── \xC3\xA4\\x0a (stored as "
                                              "../d/\xC3\xA4\\x0a)\n4 files\n"},
        {"x.cab --only A.TXT --ignore-case --exclude d",
         head + a + "         3  1 file\n\nTo write these files to disk: harbor expand x.cab\n"},
        {"list --json x.cab --encoding CP437 --exclude e --exclude d/a*",
         "{\"type\":\"file\",\"archive\":\"x.cab\",\"path\":\"a.txt\",\"size\":3,\"modified\":\""
         "2004-02-29T13:37:42" +
             json +
             "0}\n"
             "{\"type\":\"file\",\"archive\":\"x.cab\",\"path\":\"d/\xCE\xA3\\n\",\"size\":0,\"stored\":\""
             "../d/\xCE\xA3\\n\",\"modified\":\"2004-02-29T13:37:42" +
             json +
             "3}\n"
             "{\"type\":\"archive\",\"archive\":\"x.cab\",\"files\":2,\"bytes\":3,\"ok\":true}\n"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(run(each.arguments), fine(each.output)) << each.arguments;
    cabinet named;
    named.folder(support::stored).file({.name = "\xC3\xA4", .attributes = 0xA0}).file({.name = "\xC3\xA4"});
    save(named, "y.cab");
    EXPECT_EQ(run("list -q y.cab --encoding CP437 | cut -c 41-"), fine("\xC3\xA4\n\xE2\x94\x9C\xC3\xB1\n"))
        << "one is marked as UTF-8";
    write_file(place / "patterns", "none\r\n\na.txt\n");
    EXPECT_EQ(run("list -q x.cab -- @patterns"),
              failed("harbor: none: not found in the archive\n",
                     a + "      1000  1980-01-01 13:37:42  ---a-  d/a.txt\n"));
    EXPECT_EQ(run("list --check --json none x.cab -- e | grep -v '\"file\"'; exit 1"),
              failed({},
                     "{\"type\":\"error\",\"archive\":\"none\",\"message\":\"No such file or directory\"}\n"
                     "{\"type\":\"archive\",\"archive\":\"none\",\"files\":0,\"bytes\":0,\"ok\":false}\n"
                     "{\"type\":\"error\",\"archive\":\"x.cab\",\"path\":\"d/e/b\",\"message\":\""
                     "invalid deflate block artifact\"}\n"
                     "{\"type\":\"error\",\"archive\":\"x.cab\",\"path\":\"d/e/b\",\"message\":\""
                     "incomplete after 0 bytes\"}\n"
                     "{\"type\":\"archive\",\"archive\":\"x.cab\",\"files\":0,\"bytes\":0,\"ok\":false}\n"));
    EXPECT_EQ(run("list --check x.cab -q --only a.txt --exclude d"), fine(a))
        << "damage in data that is not wanted is not noticed";
}

TEST_F(List, ExplainsTheCommandLine) {
    save(cabinet().file("a", "1"));
    save(cabinet().file("a", "1"), "-x.cab");
    const struct {
        std::string arguments, complaint, command;
    } cases[] = {
        {"extract x.cab", "extract: no such command; did you mean expand?", ""},
        {"lst x.cab", "lst: no such command; did you mean list?", ""},
        {"-q", "no archive or file is named", ""},
        {"EXTRACT x.cab", "EXTRACT: no such command; did you mean expand?", ""},
        {"x.cab -C t", "-C is an option of expand, not of list", ""},
        {"expand x.cab -C ''", "--directory: the name of the folder is empty", " expand"},
        {"expand --directory= x.cab", "--directory needs a value", ""},
        {"expand x.cab -C a -C b", "--directory is given more than once", " expand"},
        {"expand x.cab --overwrite", "--overwrite needs a value", " expand"},
        {"list x.cab --tree --json", "--json and --tree cannot be used together", " list"},
        {"test -j x.cab", "--jobs: x.cab is no number from 1 to 256", " test"},
        {"test -x.cab", "-x.cab: no such option; the file of that name is ./-x.cab", " test"},
        {"expand -q", "no archive or file is named", " expand"},
        {"y.cab", "y.cab: neither a command nor a file", ""},
        {"expand x.cab 'a b'",
         "a b: no such file on disk. Names of files in an archive go behind --: x.cab -- 'a b'", " expand"},
        {"x -", "the standard input has no name, so -C DIR is needed", " expand"},
        {"t - -", "the standard input can be read only once", " test"},
        {"expand x.cab --overwrite all", "--overwrite: all is none of ask, never, always, rename, newer",
         " expand"},
        {"list x.cab -- @none", "cannot read patterns from none", " list"},
        {"list x.cab --jsno", "--jsno: no such option; did you mean --json?", " list"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(run(each.arguments),
                  (support::transcript{
                      2, "", "harbor: " + each.complaint + "\nSee harbor" + each.command + " --help.\n"}));
    EXPECT_EQ(run("list -h"), run("list --help"));
    for (const std::string printing : {"--help", "list --json x.cab", "x.cab"}) {
        const auto full = run(printing + " >/dev/full");
        EXPECT_EQ(full.status, 1) << printing;
        EXPECT_TRUE(full.err.starts_with("harbor: cannot write to the standard output")) << full;
    }
    const auto none = run("");
    EXPECT_TRUE(none.status == 2 && none.err == run("help").out && none.err.starts_with("Usage: harbor"));
    for (const std::string command : {"", "expand", "list", "test", "formats"}) {
        std::istringstream help(run(command + " --help").out);
        unsigned lines = 0;
        for (std::string line; std::getline(help, line); ++lines)
            EXPECT_LE(line.size(), 80u) << line;
        EXPECT_GT(lines, 4u) << command;
    }
}

} // namespace

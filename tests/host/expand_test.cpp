#include "support/program.h"

#include <sys/stat.h>
#include <unistd.h>

namespace {

using support::cabinet;
using support::read_file;
using support::tree;
using support::write_file;

struct Expand : support::program {};

TEST_F(Expand, ReplacesOnlyOnRequest) {
    save(cabinet().file("a", "one").file("d\\b", "two"));
    EXPECT_EQ(run("expand x.cab -v"), fine("a\nd/b\nexpanded 2 files, 6 B, into x/\n"));
    EXPECT_EQ(tree(place / "x"), "a d/ d/b ");
    save(cabinet().file("a", "three").file("d\\b", "four").file("d\\c", "five"));
    EXPECT_EQ(run("expand -q x.cab"),
              failed("harbor: x.cab: a: exists already (--overwrite says what to do then)\n"
                     "harbor: x.cab: d/b: exists already (--overwrite says what to do then)\n"));
    EXPECT_EQ(run("expand x.cab --overwrite never -v"), fine("a: kept\nd/b: kept\nd/c: kept\n"
                                                             "kept 3 existing files in x/\n"));
    EXPECT_EQ(read_file(place / "x/a") + read_file(place / "x/d/b") + read_file(place / "x/d/c"),
              "onetwofive");
    EXPECT_EQ(run("expand -q x.cab --overwrite always"), fine());
    EXPECT_EQ(read_file(place / "x/a") + read_file(place / "x/d/b"), "threefour");

    cabinet damaged;
    damaged.folder(support::stored).file({.name = "d\\b", .size = 5});
    save(damaged.block({.payload = "ha"}).block({.payload = "lf!", .checksum = 1}));
    EXPECT_EQ(run("expand -q x.cab -C x --overwrite always"),
              failed("harbor: x.cab: d/b: CRC mismatch, data is invalid\n"
                     "harbor: x.cab: d/b: incomplete after 2 bytes\n"));
    EXPECT_EQ(read_file(place / "x/d/b"), "four") << "the old file stays as it was";
    EXPECT_EQ(tree(place / "x"), "a d/ d/b d/c ");
}

TEST_F(Expand, StaysInsideItsFolder) {
    save(cabinet()
             .file("../../up", "1")
             .file("\\rooted", "2")
             .file("d\\..", "3")
             .file("a\x1b[2J", "4")
             .file("a", "5")
             .file("a", "6")
             .file("a\\b", "7")
             .file("d\\", "8")
             .file(".harbor-1-1", "9"));
    const auto refused = failed("harbor: x.cab: d/..: its name is reserved\n"
                                "harbor: x.cab: a: another file of the archive has that name\n"
                                "harbor: x.cab: a/b: cannot use folder a: it is not a folder\n"
                                "harbor: x.cab: d/: its name is empty\n"
                                "harbor: x.cab: .harbor-1-1: its name is reserved\n");
    EXPECT_EQ(run("test -q x.cab"), refused);
    EXPECT_EQ(run("expand -q x.cab -C t"), refused);
    EXPECT_EQ(tree(place.path), "t/ t/a t/a\x1b[2J t/d/ t/rooted t/up x.cab ");
    // Files of one archive never replace each other; those of another archive may be replaced.
    for (const std::string policy : {"--overwrite never", "--overwrite always", ""}) {
        std::filesystem::remove_all(place / "u");
        EXPECT_NE(
            run("expand -q x.cab -C u " + policy).err.find(": a: another file of the archive has that name"),
            std::string::npos);
        EXPECT_EQ(read_file(place / "u/a"), "5");
    }
    save(cabinet().file("a", "new"), "y.cab");
    EXPECT_EQ(run("expand -q y.cab -C u --overwrite always"), fine());
    EXPECT_EQ(read_file(place / "u/a"), "new");
    EXPECT_EQ(run("expand -q x.cab y.cab -C v").status, 1);
    EXPECT_EQ(tree(place / "v/y"), "a ") << "several archives get a folder each";
    save(cabinet().file("a", "new"), "t/y.cab");
    EXPECT_EQ(run("expand -q y.cab t/y.cab ...cab ..cab -C w", "cp y.cab ...cab; cp y.cab ..cab;"), fine());
    EXPECT_EQ(tree(place / "w"), "...cab.contents/ ...cab.contents/a ..cab.contents/ ..cab.contents/a y (2)/ "
                                 "y (2)/a y/ y/a ");
}

TEST_F(Expand, ExpandsOnlySelectedFiles) {
    save(cabinet().file("a.txt", "1").file("d\\b.txt", "2").file("e\\c.dat", "3"));
    EXPECT_EQ(run("expand -q x.cab -- 'b.*'"), fine());
    EXPECT_EQ(tree(place / "x"), "d/ d/b.txt ");
    EXPECT_EQ(run("expand -q x.cab -C t -- e none"), failed("harbor: none: not found in the archive\n"));
    EXPECT_EQ(tree(place / "t"), "e/ e/c.dat ");
}

TEST_F(Expand, PutsFilesWhereTheOptionsSay) {
    cabinet made;
    made.file("Top.TXT", "12").file({.name = "D\\E\\B.exe", .size = 3, .attributes = 0x41});
    made.file({.name = "D\\f", .size = 4});
    made.folders.back().content += "abcdefg";
    save(made);
    const struct {
        std::string arguments, made;
    } cases[] = {
        {"", "D/ D/E/ D/E/B.exe D/f Top.TXT "},
        {"--lower", "d/ d/e/ d/e/b.exe d/f top.txt "},
        {"--flat", "B.exe Top.TXT f "},
        {"--strip 1 --lower", "e/ e/b.exe f top.txt "},
        {"--strip 7 --only 'D/*' --exclude '*.exe'", "f "},
        {"--dry-run --flat", ""},
    };
    for (const auto& each : cases) {
        std::filesystem::remove_all(place / "t");
        EXPECT_EQ(run("expand -q x.cab -C t " + each.arguments), fine());
        EXPECT_EQ(tree(place / "t"), each.made) << each.arguments;
    }
    EXPECT_EQ(run("expand --stdout x.cab --exclude top.txt --ignore-case"), fine("abcdefg"));
    EXPECT_EQ(run("expand x.cab -C t -- top.txt --ignore-case").status, 1) << "patterns alone follow --";
    run("expand -q x.cab -C t", "umask 022;");
    EXPECT_EQ(run("expand x.cab -n -C t --lower").out, "top.txt\nd/e/b.exe\nd/f\nwould expand 3 files, 9 B, "
                                                       "into t/\n");
    EXPECT_EQ(run("expand x.cab -n -C t --overwrite never").out, "would keep 3 existing files in t/\n");
    struct stat b = {}, plain = {};
    ASSERT_EQ(stat((place / "t/D/E/B.exe").c_str(), &b), 0);
    EXPECT_EQ(b.st_mode & 0777, 0555u);
    EXPECT_LT(b.st_mtime, 1100000000);
    EXPECT_EQ(run("expand -q x.cab -C t --overwrite always"), fine()) << "a read-only file is no obstacle";
    run("expand -q x.cab -C u --no-attributes --no-mtime", "umask 022;");
    ASSERT_EQ(stat((place / "u/D/E/B.exe").c_str(), &plain), 0);
    EXPECT_EQ(plain.st_mode & 0777, 0644u);
    EXPECT_GT(plain.st_mtime, 1700000000);
}

TEST_F(Expand, SettlesClashesAsAsked) {
    cabinet made;
    made.file("a.txt", "1")
        .file("a.txt", "2")
        .file("d", "3")
        .file("d\\e", "4")
        .file("f\\g", "5")
        .file("f", "6");
    made.file("d\\e\\h", "7").file("d\\i", "8");
    save(made);
    EXPECT_EQ(run("expand -q x.cab -C t --overwrite rename"), fine());
    EXPECT_EQ(tree(place / "t"),
              "a (2).txt a.txt d d (2)/ d (2)/e d (2)/e (2)/ d (2)/e (2)/h d (2)/i f (2) f/ f/g ");
    EXPECT_EQ(run("expand x.cab -C t --overwrite rename --only 'a*' -v"),
              fine("a.txt: becomes a (3).txt\na.txt: becomes a (4).txt\na (3).txt\na (4).txt\n"
                   "expanded 2 files, 2 B, into t/\n"));

    save(cabinet().file("a", "new").file("b", "new").file("c", "new").file("d", "new"));
    const auto refill = [&] {
        for (const std::string name : {"a", "b", "c", "d"})
            write_file(place.path / "u" / name, name + ' ');
    };
    const auto content = [&] {
        return read_file(place / "u/a") + read_file(place / "u/b") + read_file(place / "u/c") +
               read_file(place / "u/d");
    };
    std::filesystem::create_directory(place / "u");
    refill();
    EXPECT_EQ(run("expand -q x.cab -C u --overwrite newer", "touch -d 2001-01-01 u/b u/d;"), fine());
    EXPECT_EQ(content(), "a newc new");
    const struct {
        std::string answers, result;
    } cases[] = {{"y\\nno\\n?\\ny\\nn\\n", "newb newd "},
                 {"n\\na\\n", "a newnewnew"},
                 {"o\\n", "a b c d "},
                 {"y\\nq\\n", "a b c d "},
                 {"r\\no\\n", "a b c d "}};
    for (const auto& each : cases) {
        refill();
        run("--version", "printf '" + each.answers +
                             "' | script -qec \"'" HARBOR_PROGRAM
                             "' expand x.cab -C u\" /dev/null >/dev/null;");
        EXPECT_EQ(content(), each.result) << each.answers;
    }
    EXPECT_EQ(read_file(place / "u/a (2)"), "new");

    cabinet damaged;
    damaged.folder(support::stored).file({.name = "a", .size = 5});
    save(damaged.block({.payload = "ha"}).block({.payload = "lf!", .checksum = 1}));
    run("expand -q x.cab -C v");
    EXPECT_EQ(tree(place / "v"), "");
    run("expand -q x.cab -C v --keep-broken");
    EXPECT_EQ(tree(place / "v") + read_file(place / "v/a.partial"), "a.partial ha");
}

TEST_F(Expand, ADryRunSaysWhatARunDoes) {
    save(cabinet()
             .file("old", "1")
             .file("new", "2")
             .file("new", "3")
             .file("d\\e", "4")
             .file("new\\f", "5")
             .file("..", "6"));
    for (const std::string policy : {"", "never", "always", "rename", "newer"}) {
        std::filesystem::remove_all(place / "t");
        std::filesystem::create_directories(place / "t/d/e");
        write_file(place / "t/old", "old");
        const auto arguments = "expand x.cab -C t --json" + (policy.empty() ? "" : " --overwrite " + policy) +
                               (policy == "newer" ? " --lower" : "");
        const auto before = tree(place / "t");
        const auto planned =
            run("--version >/dev/null",
                "'" HARBOR_PROGRAM "' " + arguments +
                    " -n >plan; status=$?; sed 's/\"plan\"/\"file\"/; s/,\"exists\":[a-z]*//' "
                    "plan | sort; rm plan; [ $status = 0 ] &&");
        EXPECT_EQ(tree(place / "t"), before);
        EXPECT_EQ(planned, run(arguments + " >made; status=$?; sort made; rm made; exit $status")) << policy;
    }
}

TEST_F(Expand, PrintsFilesThatShareBytesOneAfterAnother) {
    for (const std::string name : {"share.cab", "overlap.cab"}) {
        run("expand -q " HARBOR_TEST_DATA "/" + name + " -C " + name);
        const auto printed = run("expand --stdout " HARBOR_TEST_DATA "/" + name);
        std::size_t size = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(place / name))
            if (entry.is_regular_file()) {
                const auto bytes = read_file(entry.path());
                EXPECT_NE(printed.out.find(bytes), std::string::npos) << entry.path();
                size += bytes.size();
            }
        EXPECT_EQ(printed.out.size(), size);
    }
}

TEST_F(Expand, PutsASingleItemIntoNoFolder) {
    std::filesystem::create_directory(place / "there");
    write_file(place / ".rc", "mine");
    save(cabinet().file("x", "1"));
    save(cabinet().file("y\\a", "3").file("y\\b\\c", "4"), "y.cab");
    save(cabinet().file("z\\a", "5").file("z\\b", "6"), "other.cab");
    save(cabinet().file(".rc", "theirs"), "rc.cab");
    save(cabinet().file("there\\new", "7"), "there.1.cab");
    save(cabinet().file("inner.cab", cabinet().file(".rc", "theirs").bytes()), "n.cab");
    save(cabinet().file("s", "8").file("s\\t", "9"), "both.cab");
    save(cabinet().file("f\\.rc", "theirs").file("f\\f.cab", "theirs"), "f.cab");
    const auto before = tree(place.path);
    const auto refusal = [](const std::string& archive, const std::string& name) {
        return failed("harbor: " + archive + ": " + name +
                      ": exists already (-C DIR expands into another folder)\n");
    };
    const struct {
        std::string arguments;
        support::transcript result;
        std::string made; ///< what the current folder has then that it didn't have before
    } cases[] = {
        {"x.cab", fine(), "x "},
        {"x.cab", refusal("x.cab", "x"), ""},
        {"x.cab --overwrite always", refusal("x.cab", "x"), ""},
        {"x.cab --overwrite never", fine(), ""},
        {"x.cab -C x.d", fine(), "x.d/ x.d/x "},
        {"y.cab", fine(), "y/ y/a y/b/ y/b/c "},
        {"y.cab --overwrite always", fine(), ""},
        {"other.cab", fine(), "z/ z/a z/b "},
        {"other.cab --overwrite always", refusal("other.cab", "z"), ""},
        {"other.cab -- a", fine(), "other/ other/z/ other/z/a "},
        {"rc.cab --overwrite always", refusal("rc.cab", ".rc"), ""},
        {"f.cab --overwrite always --flat", fine(), "f/ f/.rc f/f.cab "},
        {"f.cab --overwrite always --strip 1", fine(), ""},
        {"there.1.cab --overwrite never", refusal("there.1.cab", "there"), ""},
        {"--nested --overwrite always n.cab", fine(), "n/ n/.rc "},
        {"both.cab", failed("harbor: both.cab: s/t: cannot use folder s: it is not a folder\n"),
         "both/ both/s "},
    };
    std::string expected = before;
    for (const auto& each : cases) {
        const auto old = tree(place.path);
        EXPECT_EQ(run("expand -q " + each.arguments), each.result) << each.arguments;
        std::string added = tree(place.path);
        for (std::size_t start = 0, end; start < old.size(); start = end + 1) {
            end = old.find(' ', start);
            const auto known = old.substr(start, end + 1 - start);
            const auto found = (" " + added).find(" " + known);
            ASSERT_NE(found, std::string::npos) << each.arguments << " removed " << known;
            added.erase(found, known.size());
        }
        EXPECT_EQ(added, each.made) << each.arguments;
    }
    EXPECT_EQ(read_file(place / ".rc"), "mine");
    EXPECT_EQ(run("expand -q /dev/stdin <x.cab"), refusal("/dev/stdin", "x"));
    EXPECT_EQ(run("expand -q /dev/stdin", "cat x.cab |"), fine()) << "a pipe can't be read twice";
    EXPECT_EQ(read_file(place / "stdin.contents/x"), "1");
}

TEST_F(Expand, AReplacedFileKeepsItsPermissionsAndOwner) {
    save(cabinet().file("a", "new").file("b", "new"));
    std::filesystem::create_directory(place / "t");
    write_file(place / "t/a", "old");
    ASSERT_EQ(chmod((place / "t/a").c_str(), 04640), 0);
    const bool may_set_owner = chown((place / "t/a").c_str(), 1234, 1235) == 0;
    EXPECT_EQ(run("expand -q x.cab -C t --overwrite always", "umask 022;"), fine());
    struct stat a = {}, b = {};
    ASSERT_EQ(stat((place / "t/a").c_str(), &a) + stat((place / "t/b").c_str(), &b), 0);
    EXPECT_EQ(a.st_mode & 07777, 0640u) << "the archive's bytes never run as another user";
    EXPECT_EQ(b.st_mode & 07777, 0644u);
    if (may_set_owner) {
        EXPECT_EQ(std::pair(a.st_uid, a.st_gid), std::pair(1234u, 1235u));
    }
}

TEST_F(Expand, ASignalLeavesNoPartOfAFile) {
    cabinet made;
    made.file("a", "whole").file("b", std::string(200000, 'b')).file("c", "more");
    save(made);
    for (const auto* const policy : {"", "--overwrite always"})
        for (const auto* const signal : {"INT", "TERM", "HUP", "QUIT", "KILL"}) {
            std::filesystem::remove_all(place / "t");
            std::filesystem::create_directory(place / "t");
            write_file(place / "t/old", "old");
            if (*policy)
                write_file(place / "t/b", "old");
            // The program waits in the middle of b when the signal arrives.
            run(std::string("expand -q - -C t ") + policy,
                std::string("{ head -c 100000 x.cab; sleep 0.4; } | timeout -s ") + signal + " 0.2 ");
            EXPECT_EQ(tree(place / "t"), *policy ? "a b old " : "a old ") << signal << policy;
            EXPECT_EQ(read_file(place / "t/b"), *policy ? "old" : "(none)");
        }
}

TEST_F(Expand, RemovesTemporaryFilesOfRunsThatNoLongerExist) {
    save(cabinet().file("a", "1").file("d\\b", "2"));
    std::filesystem::create_directories(place / "t/d/unused");
    const auto own = "t/.harbor-" + std::to_string(getpid()) + "-0";
    for (const std::string name :
         {"t/.harbor-999999999-0", "t/d/.harbor-999999999-7", "t/d/unused/.harbor-999999999-7",
          "t/.harbor-999999999-", "t/.harbor-x-1", "t/.harbor-999999999-1x"})
        write_file(place / name, "part");
    write_file(place / own, "part");
    EXPECT_EQ(run("expand -q x.cab -C t"), fine());
    EXPECT_TRUE(std::filesystem::remove(place / own)) << "this process exists";
    EXPECT_EQ(tree(place / "t"), ".harbor-999999999- .harbor-999999999-1x .harbor-x-1 a d/ d/b d/unused/ "
                                 "d/unused/.harbor-999999999-7 ");
}

TEST_F(Expand, TwoRunsIntoOneFolderEndWell) {
    cabinet made;
    for (int i = 0; i < 50; ++i)
        made.file(std::to_string(i), std::string(1000, 'x'));
    save(made);
    const std::string again = "for i in 1 2 3 4 5; do '" HARBOR_PROGRAM
                              "' expand -q x.cab -C t --overwrite always || echo failed; done";
    EXPECT_EQ(run("--version >/dev/null; wait", "{ " + again + "; } & { " + again + "; } &"), fine());
    for (int i = 0; i < 50; ++i)
        EXPECT_EQ(read_file(place.path / "t" / std::to_string(i)), std::string(1000, 'x'));
    EXPECT_EQ(tree(place / "t").find(".harbor"), std::string::npos);
}

TEST_F(Expand, ExpandsArchivesInsideArchives) {
    auto deep = cabinet().file("deep", "down").bytes();
    for (const auto* const name : {"3.cab", "2.cab"})
        deep = cabinet().file(name, deep).bytes();
    cabinet half;
    half.file("h", std::string(100, 'h')).folders.back().checksums = false;
    const auto cut = support::cut(half.bytes(), 120);
    save(cabinet()
             .file("one.cab", cabinet().file("one", "alone").bytes())
             .file("d\\two.cab", cabinet().file("a", "1").file("b\\c", "2").bytes())
             .file("1.cab", deep)
             .file("cut.cab", cut)
             .file("none.cab", cabinet().bytes())
             .file("plain", "text"));
    EXPECT_EQ(run("expand -q --nested x.cab"),
              failed("harbor: x.cab: cut.cab: kept as a file: cut short: the input ends at byte 120\n"));
    EXPECT_EQ(tree(place / "x"), "cut.cab d/ d/two/ d/two/a d/two/b/ d/two/b/c deep none/ one plain ");
    EXPECT_EQ(read_file(place / "x/deep") + read_file(place / "x/one") + read_file(place / "x/d/two/b/c"),
              "downalone2");
    EXPECT_EQ(read_file(place / "x/cut.cab"), cut);
    EXPECT_EQ(run("expand -q --nested --depth 2 - -C t <x.cab").err,
              "harbor: -: 1/2/3.cab: kept as a file: archives are nested more than 2 deep (--depth)\n"
              "harbor: -: cut.cab: kept as a file: cut short: the input ends at byte 120\n");
    EXPECT_EQ(tree(place / "t"), "3.cab cut.cab d/ d/two/ d/two/a d/two/b/ d/two/b/c none/ one plain ");

    // A set is expanded from its first volume.
    cabinet set;
    for (const std::string name : {"set-tiny1.cab", "set-tiny2.cab", "set-tiny3.cab"})
        set.file((name == "set-tiny2.cab" ? "d\\" : "") + name, read_file(HARBOR_TEST_DATA "/" + name));
    save(set, "set.cab");
    EXPECT_EQ(run("expand -q --nested set.cab -C s"), fine());
    EXPECT_EQ(tree(place / "s"),
              "d/ d/set-tiny2.cab set-tiny1/ set-tiny1/hello.bin set-tiny1/note.bin set-tiny3.cab ");

    // A file that gets fewer bytes than stated is missing, in whichever archive it is.
    cabinet lacking;
    lacking.folder(support::stored).file({.name = "s", .size = 10}).block({.payload = "five5"});
    save(cabinet().file("in.cab", lacking.bytes()).file("w", "whole"), "y.cab");
    EXPECT_EQ(run("expand -q --nested y.cab -C v"), failed("harbor: y.cab: in/s: no data arrived\n"));
    save(lacking, "z.cab");
    EXPECT_EQ(run("expand -q --nested z.cab -C v"), failed("harbor: z.cab: s: no data arrived\n"));
    EXPECT_EQ(tree(place / "v"), "in/ w ");

    // Its only item can't take the place of the folder made for an archive.
    save(cabinet().file("1.cab", deep), "one.cab");
    write_file(place / ".__&&temp_folder&&__", "in the way");
    EXPECT_EQ(
        run("expand -q --nested one.cab -C ."),
        failed("harbor: one.cab: 1: its only item could not replace it: cannot rename 1: File exists\n"));
    EXPECT_EQ(tree(place / "1"), "deep ");
    std::filesystem::remove(place / ".__&&temp_folder&&__");

    // A process that was killed at that moment has left its folder.
    std::filesystem::create_directories(place / "killed/.__&&temp_folder&&__");
    write_file(place / "killed/.__&&temp_folder&&__/left", "");
    EXPECT_EQ(run("expand -q --nested one.cab -C killed"), fine());
    EXPECT_EQ(tree(place / "killed"), "1 (2)/ 1 (2)/left deep ");

    // Existing files block both the content of an archive and the archive itself.
    std::filesystem::create_directory(place / "u");
    write_file(place / "u/1", "");
    write_file(place / "u/1.cab", "");
    EXPECT_EQ(run("expand -q --nested x.cab -C u").err,
              "harbor: x.cab: 1.cab: kept as a file: a file named 1 exists\n"
              "harbor: x.cab: 1.cab: exists already (--overwrite says what to do then)\n"
              "harbor: x.cab: cut.cab: kept as a file: cut short: the input ends at byte 120\n");
    EXPECT_EQ(tree(place / "u"), "1 1.cab cut.cab d/ d/two/ d/two/a d/two/b/ d/two/b/c none/ one plain ");
}

TEST_F(Expand, ReportsDiskErrors) {
    save(cabinet().file("a", "fits").file("b", std::string(100000, 'b')).file("c", "more"));
    const auto limited = run("expand -q x.cab", "ulimit -f 60;");
    EXPECT_EQ(limited.status, 1);
    EXPECT_TRUE(limited.err.starts_with("harbor: x.cab: b: incomplete after ") &&
                limited.err.ends_with(" bytes: File too large\n"))
        << limited;
    EXPECT_EQ(read_file(place / "x/a") + read_file(place / "x/c"), "fitsmore") << "the others are written";
    std::filesystem::remove_all(place / "x");
    EXPECT_EQ(run("expand -q x.cab -C x.cab"),
              failed("harbor: x.cab: cannot use folder x.cab: it is a file\n"));
    std::filesystem::create_directory_symlink(logs.path, place / "x");
    EXPECT_EQ(run("expand -q x.cab"), failed("harbor: x.cab: cannot use folder x: it is a symbolic link\n"));
    EXPECT_EQ(run("expand -q x.cab -C x"), fine()) << "the user named this link";
    EXPECT_EQ(run("list x.cab >/dev/full"),
              failed("harbor: cannot write to the standard output: No space left on device\n"));
    EXPECT_EQ(run("list x.cab | true; exit 0").err, "");
}

} // namespace

#include "support/program.h"

// Archives inside files that are none themselves.

namespace {

using support::cabinet;
using support::write_file;

struct Embedded : support::program {};

TEST_F(Embedded, FindsThemWithPlaceSizeAndFormat) {
    const auto one = cabinet().file("a", "one").bytes();
    write_file(place / "two.bin", "stub" + one + "x" + one);
    write_file(place / "cut\x1b.bin", "." + support::cut(one, 70));
    const std::string head = "      Offset          Size  Format\n";
    const std::string lines = "           4            73  cab\n          78            73  cab\n";
    EXPECT_EQ(run("find two.bin"), fine(head + lines));
    EXPECT_EQ(run("find -q two.bin two.bin"), fine(lines + lines));
    EXPECT_EQ(run("find -v --color always two.bin | head -n 2"),
              fine("\x1b[1m" + head.substr(0, head.size() - 1) +
                   "\x1b[0m\n           4            73  cab: CAB, application/x-cab\n"));
    EXPECT_EQ(
        run("find --json -", "cat two.bin |"),
        fine("{\"type\":\"found\",\"file\":\"-\",\"offset\":4,\"size\":73,\"format\":\"cab\",\"cut\":false}\n"
             "{\"type\":\"found\",\"file\":\"-\",\"offset\":78,\"size\":73,\"format\":\"cab\",\"cut\":false}"
             "\n"));
    EXPECT_EQ(run("find cut*.bin none /dev/null"),
              failed("harbor: none: No such file or directory\n"
                     "harbor: /dev/null: no archive of a known format found\n",
                     "cut\\x1b.bin:\n" + head +
                         "           1            73  cab, cut short\n\nnone:\n\n/dev/null:\n"));
}

TEST_F(Embedded, AreReadWhereAFileBeginsWithNoneOrOthersFollow) {
    const auto one = cabinet().file("a", "one").bytes();
    const auto two = cabinet().file("b", "two").file("in.cab", one).bytes();
    write_file(place / "sfx.exe", " MSCF stub" + two + "tail");
    write_file(place / "2.bin", one + two);
    write_file(place / "cut.cab", support::cut(two, two.size() - 1));
    write_file(place / "plain", "text");
    EXPECT_EQ(run("test sfx.exe 2.bin - <2.bin | grep ,; exit 0"),
              fine("sfx.exe: OK, 2 files, 76 B\n2.bin@0: OK, 1 file, 3 B\n2.bin@73: OK, 2 files, 76 B\n"
                   "-@0: OK, 1 file, 3 B\n-@73: OK, 2 files, 76 B\n"));
    EXPECT_EQ(run("test cut.cab").err.find('@'), std::string::npos) << "its own archives are its files";
    EXPECT_EQ(run("test -q - plain", "cat sfx.exe |"),
              failed("harbor: -: not an archive of a known format (archives inside other data are found in "
                     "files only)\nharbor: plain: not an archive of a known format\n"));
    EXPECT_EQ(run("list --tree 2.bin"),
              fine("2.bin@0\n└── a\n1 file\n\n2.bin@73\n├── b\n└── in.cab\n2 files\n"));
    EXPECT_EQ(run("expand -q sfx.exe"), fine());
    EXPECT_EQ(support::tree(place / "sfx") + support::read_file(place / "sfx/in.cab"), "b in.cab " + one);
}

TEST_F(Embedded, GoIntoOneFolderBehindAnArchiveAndOtherwiseIntoTheirOwn) {
    const auto one = cabinet().file("a", "one").bytes();
    const auto two = cabinet().file("a", "two").file("d\\b", "three").bytes();
    write_file(place / "x.bin", one + "text" + two);
    write_file(place / "y.exe", "stub" + one + two);
    const auto clash = [](const std::string& archive) {
        return "harbor: " + archive + ": a: another file of the archive has that name\n";
    };
    const struct {
        std::string arguments;
        support::transcript seen;
        std::string tree;
    } cases[] = {
        {"x.bin", failed(clash("x.bin@77"), "expanded 1 file, 3 B, into x/\nexpanded 1 file, 5 B, into x/\n"),
         "x.bin x/ x/a x/d/ x/d/b y.exe "},
        {"-q x.bin -C t", failed(clash("x.bin@77")), "t/ t/a t/d/ t/d/b x.bin y.exe "},
        {"-q x.bin -- b", fine(), "x.bin x/ x/d/ x/d/b y.exe "},
        {"-q x.bin -C t --overwrite rename", fine(), "t/ t/a t/a (2) t/d/ t/d/b x.bin y.exe "},
        {"-q x.bin y.exe -C t", failed(clash("x.bin@77")),
         "t/ t/x/ t/x/a t/x/d/ t/x/d/b t/y.exe@4/ t/y.exe@4/a t/y.exe@77/ t/y.exe@77/a t/y.exe@77/d/ "
         "t/y.exe@77/d/b x.bin y.exe "},
        {"-q y.exe", fine(), "x.bin y.exe y.exe@4/ y.exe@4/a y.exe@77/ y.exe@77/a y.exe@77/d/ y.exe@77/d/b "},
        {"-q y.exe -C t -- none", failed("harbor: none: not found in the archive\n"), "x.bin y.exe "},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.arguments);
        EXPECT_EQ(run("expand " + each.arguments, "rm -rf t x *@*;"), each.seen);
        EXPECT_EQ(support::tree(place.path), each.tree);
    }
    const auto again = run("expand -q x.bin --overwrite always; '" HARBOR_PROGRAM "' expand -q x.bin "
                           "--overwrite always",
                           "rm -rf x;");
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(support::read_file(place / "x/a"), "one") << "of two files of one name the first is written";
    // Where expand puts them.
    EXPECT_EQ(run("test --sha256 x.bin y.exe | cut -c 67-").out,
              "x/a\nx/a\nx/d/b\ny.exe@4/a\ny.exe@77/a\ny.exe@77/d/b\n");
    EXPECT_EQ(run("test --sha256 x.bin | cut -c 67-").out, "a\na\nd/b\n");
}

TEST_F(Embedded, SaysWhereTheSearchIsLimited) {
    auto head = cabinet().file("a", "one").bytes();
    head.replace(8, 4, std::string("\0\0\x09\0", 4)); // states more bytes than follow
    std::string many = "stub", heads = "stub";
    for (int i = 0; i < 18; ++i)
        many += head;
    write_file(place / "many.bin", many + cabinet().file("b", "").bytes());
    head.replace(16, 4, std::string("\0\0\x08\0", 4)); // the place of the file records
    for (int i = 0; i < 3000; ++i)
        heads += head.substr(0, 44);
    write_file(place / "heads.bin", heads + std::string(0x90000, '\0'));
    const std::string stopped =
        "harbor: many.bin: more than 16 archives in it are cut short; only so many of them are read\n";
    const std::string untested =
        "harbor: heads.bin: so much in it looks like archives that some of that was not tested\n";
    EXPECT_EQ(run("test many.bin | grep -c ', 1 file'").out, "17\n") << "and the one with an end";
    EXPECT_EQ(run("test -q -j 2 many.bin heads.bin -- a"),
              failed(stopped + "harbor: heads.bin: not an archive of a known format\n" + untested));
    EXPECT_EQ(run("find heads.bin").err, untested);
}

} // namespace

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
    EXPECT_EQ(run("find two.bin"), fine("           4            73  cab\n"
                                        "          78            73  cab\n"));
    EXPECT_EQ(
        run("find --json -", "cat two.bin |"),
        fine("{\"type\":\"found\",\"file\":\"-\",\"offset\":4,\"size\":73,\"format\":\"cab\",\"cut\":false}\n"
             "{\"type\":\"found\",\"file\":\"-\",\"offset\":78,\"size\":73,\"format\":\"cab\",\"cut\":false}"
             "\n"));
    EXPECT_EQ(run("find cut*.bin none /dev/null"),
              failed("harbor: none: No such file or directory\n"
                     "harbor: /dev/null: no archive of a known format found\n",
                     "cut\\x1b.bin:\n           1            73  cab, cut short\nnone:\n/dev/null:\n"));
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
    EXPECT_EQ(run("test - plain", "cat sfx.exe |"),
              failed("harbor: -: not an archive of a known format (archives inside other data are found in "
                     "files only)\nharbor: plain: not an archive of a known format\n"));
    EXPECT_EQ(run("list --tree 2.bin"),
              fine("2.bin@0\n└── a\n1 file\n\n2.bin@73\n├── b\n└── in.cab\n2 files\n"));
    EXPECT_EQ(run("expand -q sfx.exe"), fine());
    EXPECT_EQ(run("expand -q 2.bin -- b a"), fine());
    EXPECT_EQ(run("expand 2.bin -C t"),
              fine("expanded 1 file, 3 B, into t/2.bin@0/\nexpanded 2 files, 76 B, into t/2.bin@73/\n"));
    EXPECT_EQ(run("expand -q 2.bin -C t -- none"), failed("harbor: none: not found in the archive\n"));
    EXPECT_EQ(support::tree(place.path),
              "2.bin 2.bin@0/ 2.bin@0/a 2.bin@73/ 2.bin@73/b cut.cab plain sfx.exe sfx/ sfx/b sfx/in.cab t/ "
              "t/2.bin@0/ t/2.bin@0/a t/2.bin@73/ t/2.bin@73/b t/2.bin@73/in.cab ");
    EXPECT_EQ(support::read_file(place / "sfx/in.cab") + support::read_file(place / "t/2.bin@0/a"),
              one + "one");
}

} // namespace

#include "support/program.h"

namespace {

using support::cabinet;
using support::read_file;
using support::tree;
using support::write_file;

struct Program : support::program {};

TEST_F(Program, NamesIncompleteFiles) {
    const auto short_of_blocks = [&](std::uint16_t blocks) {
        cabinet made;
        made.file("a", "12345").file("b", "67890").file("c", "abcde");
        made.folders.back().block_size = 4;
        made.folders.back().block_count = blocks;
        save(made);
        return run("test -q x.cab");
    };
    EXPECT_EQ(short_of_blocks(4), fine());
    EXPECT_EQ(short_of_blocks(3), failed("harbor: x.cab: c: incomplete after 2 bytes\n"));
    EXPECT_EQ(short_of_blocks(1), failed("harbor: x.cab: a: incomplete after 4 bytes\n"
                                         "harbor: x.cab: b: no data arrived\n"
                                         "harbor: x.cab: c: no data arrived\n"));
    EXPECT_EQ(short_of_blocks(0), failed("harbor: x.cab: a: incomplete after 0 bytes\n"
                                         "harbor: x.cab: b: no data arrived\n"
                                         "harbor: x.cab: c: no data arrived\n"));
    save(cabinet().file("empty", ""));
    EXPECT_EQ(run("test x.cab"), fine("empty: OK\nx.cab: OK, 1 file, 0 B\n"));
}

TEST_F(Program, DetectsACutAtEveryByte) {
    cabinet made;
    made.file("a", "12345").file("d\\b", std::string(600, 'b'));
    made.folders.back().block_size = 300;
    made.folders.back().checksums = false;
    const auto whole = made.bytes();
    for (std::size_t length = 5; length < whole.size(); length += length < 120 ? 1 : 29) {
        write_file(place / "x.cab", whole.substr(0, length));
        const auto end = "cut short: the input ends at byte " + std::to_string(length) + "\n";
        const auto file = run("expand -q x.cab --overwrite always");
        EXPECT_EQ(file.status, 1) << length;
        EXPECT_NE(file.err.find(end), std::string::npos) << length << ": " << file.err;
        if (length % 5 == 0) {
            EXPECT_EQ(run("expand -q - -C out --overwrite always", "cat x.cab |").status, 1) << length;
        }
    }
    write_file(place / "x.cab", whole);
    EXPECT_EQ(run("expand -q - -C piped", "cat x.cab |"), fine());
    EXPECT_EQ(read_file(place / "piped/d/b"), std::string(600, 'b'));
}

TEST_F(Program, RefusesAnOverlongPathAndContinues) {
    std::string path;
    for (int i = 0; i < 100000; ++i)
        path += "a\\";
    save(cabinet().file(path + "x", "1").file("fine", "2"));
    const auto tested = run("test x.cab");
    EXPECT_EQ(tested.status, 1);
    EXPECT_TRUE(tested.err.starts_with("harbor: x.cab: a/a/a/") &&
                tested.err.ends_with(": its path is too long\n"))
        << tested.err.substr(0, 200);
    EXPECT_EQ(std::count(tested.err.begin(), tested.err.end(), '\n'), 1);

    // Short once it is decoded, but not all of the path.
    std::string shifts = "a";
    for (int i = 0; i < 2000; ++i)
        shifts += "\x1b(B";
    save(cabinet().file(shifts + "b", "1"));
    EXPECT_EQ(run("expand -q x.cab -C t --encoding ISO-2022-JP").status, 1);
    EXPECT_EQ(tree(place.path), "x.cab ");
}

TEST_F(Program, LimitsWhatInnerArchivesExpandTo) {
    cabinet many;
    for (int i = 100000; i < 113000; ++i)
        many.file(std::to_string(i) + "\\d\\x", "");
    cabinet around;
    around.folder(support::mszip).file("many.cab", many.bytes());
    save(around.file("one.cab", cabinet().file("one", "1").bytes()));
    const auto limit = std::to_string(20000 + std::filesystem::file_size(place / "x.cab") / 8);
    const auto kept = ": kept as a file: the archives inside the archive expand to more than " + limit +
                      " items (--no-limits)\n";
    EXPECT_EQ(run("expand -q --nested x.cab"),
              failed("harbor: x.cab: many.cab" + kept + "harbor: x.cab: one.cab" + kept));
    EXPECT_EQ(tree(place / "x"), "many.cab one.cab ");
}

TEST_F(Program, ExpandsInOnePassWithoutATemporaryFile) {
    cabinet large;
    large.file("in.cab", cabinet().file("a", "1").file("b", "2").bytes()).folder(support::mszip);
    for (const std::string name : {"1", "2", "3", "4", "5"})
        large.file(name, std::string(9000000, 'z'));
    save(large);
    const auto limited = run("expand -q --nested x.cab -C t", "ulimit -f 20480;");
    EXPECT_EQ(limited.status, 1);
    EXPECT_TRUE(limited.err.starts_with("harbor: x.cab: archives inside it are kept as files: cannot ") &&
                limited.err.ends_with(": File too large\n"))
        << limited;
    EXPECT_EQ(tree(place / "t"), "1 2 3 4 5 in.cab ");
    EXPECT_EQ(read_file(place / "t/5").size(), 9000000u);
}

TEST_F(Program, WorksOnSeveralArchivesAtATime) {
    std::string names;
    for (int i = 10; i < 90; ++i) {
        cabinet made;
        for (int j = 0; j < i * 40; ++j)
            made.file(std::to_string(j), "");
        if (i % 7 == 0)
            made.folder(support::stored).file({.name = "short", .size = 1, .folder_index = 1});
        save(made, std::to_string(i) + ".cab");
        names += ' ' + std::to_string(i) + ".cab";
    }
    const auto one = run("test --jobs 1" + names + " none -- 17 77 short");
    const auto many = run("test --jobs 5" + names + " none -- 17 77 short");
    EXPECT_EQ(one, many);
    EXPECT_EQ(one.status, 1);
    EXPECT_GT(std::count(one.err.begin(), one.err.end(), '\n'), 11);
    EXPECT_EQ(run("test -q -j 2 10.cab 11.cab -- 439 999"),
              failed("harbor: 999: not found in any archive\n"));
    EXPECT_EQ(run("expand -q -j 3 -C t 10.cab 11.cab 12.cab"), fine());
    for (const std::string i : {"10", "11", "12"})
        EXPECT_TRUE(std::filesystem::exists(place.path / "t" / i / "399"));
    EXPECT_EQ(run("test -j 2 10.cab 11.cab | head -n 1").out, "10.cab: 0: OK\n");
    EXPECT_TRUE(run("test -j 2 10.cab 14.cab 11.cab").out.ends_with("\n2 of 3 archives OK\n"));
}

TEST_F(Program, ColorsAndShowsProgressOnATerminalOnly) {
    save(cabinet().file("a", "1"));
    const auto on_terminal = [&](const std::string& arguments, const std::string& before = {}) {
        return run("--version >/dev/null",
                   before + "TERM=xterm script -qec \"'" HARBOR_PROGRAM "' " + arguments + "\" /dev/null;")
            .out;
    };
    EXPECT_NE(on_terminal("list x.cab").find("\x1b[1m      Size"), std::string::npos);
    EXPECT_EQ(on_terminal("list none", "NO_COLOR=1 "), "harbor: none: No such file or directory\r\n");
    EXPECT_EQ(
        run("test x.cab none --color always"),
        failed("\x1b[1;31mharbor:\x1b[0m none: No such file or directory (names of files in an archive go "
               "behind --)\n",
               "x.cab: a: \x1b[1;32mOK\x1b[0m\nx.cab: \x1b[1;32mOK\x1b[0m, 1 file, 1 B\n"
               "none: \x1b[1;31mFAILED\x1b[0m, 0 files, 0 B OK\n1 of 2 archives OK\n"));
    const auto slow =
        on_terminal("test p --json", "mkfifo p; { head -c 50 x.cab; sleep 0.7; tail -c +51 x.cab; } >p & ");
    EXPECT_NE(slow.find(" B/s  p"), std::string::npos) << slow;
    EXPECT_NE(slow.find("\r\x1b[K{"), std::string::npos) << "it is gone at the end: " << slow;
}

TEST_F(Program, PrintsDigestsThatOthersCheck) {
    save(cabinet().file("a", "").file("d\\b", std::string(55, 'b')).file("c", std::string(300000, 'c')));
    save(cabinet().file("new\nline", "abc"), "y.cab");
    run("expand -q x.cab y.cab && '" HARBOR_PROGRAM "' test --sha256 x.cab y.cab >sums");
    EXPECT_EQ(run("test --sha256 y.cab"),
              fine("\\ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad  new\\nline\n"));
    const auto checked = run("--version >/dev/null", "sha256sum --check --strict sums;");
    EXPECT_EQ(checked.status, 0);
    EXPECT_EQ(std::count(checked.out.begin(), checked.out.end(), '\n'), 4);
    EXPECT_EQ(run("test --sha256 --json x.cab -- a").out.substr(0, 129),
              "{\"type\":\"file\",\"archive\":\"x.cab\",\"path\":\"a\",\"size\":0,\"sha256\":"
              "\"e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855\"}");
    write_file(place / "y.cab", read_file(place / "y.cab") + "tail");
    EXPECT_EQ(run("test y.cab"), fine("new\\x0aline: OK\ny.cab: 4 bytes behind the archive\n"
                                      "y.cab: OK, 1 file, 3 B\n"));
}

TEST_F(Program, DescribesItsFormats) {
    const std::string cab = "cab\n  long name: CAB\n  suffix: .cab\n  mime type: application/x-cab\n";
    const std::string cfb =
        "cfb\n  long name: Compound document\n  suffix: .msi\n  mime type: application/x-ole-storage\n";
    const std::string abilities = "  expands archives: yes\n  creates archives: no\n  recovers archives: no\n"
                                  "  is folder: yes\n  is file: no\n  is segmented: no\n";
    EXPECT_EQ(run("formats"), fine(cab + cfb));
    EXPECT_EQ(run("formats -v"), fine(cab + abilities + cfb + abilities));
    EXPECT_EQ(run("formats -q"), fine("cab\ncfb\n"));
    EXPECT_EQ(run("formats --json | head -n 1").out,
              "{\"type\":\"format\",\"name\":\"cab\",\"longName\":\"CAB\",\"suffix\":\".cab\","
              "\"mimeType\":\"application/x-cab\",\"expandsArchives\":true,\"createsArchives\":false,"
              "\"recoversArchives\":false,\"isFolder\":true,\"isFile\":false,\"isSegmented\":false}\n");
}

TEST_F(Program, ExplainsEachRefusal) {
    const std::string data = HARBOR_TEST_DATA "/";
    write_file(place / "empty", "");
    write_file(place / "text", "hello");
    cabinet continued;
    continued.header.previous = {"p", "d"};
    save(continued.file("a", "b"));
    const struct {
        std::string arguments;
        std::string complaint;
    } cases[] = {
        {"test none", "none: No such file or directory"},
        {"test .", ".: Is a directory"},
        {"test empty", "empty: the file is empty"},
        {"test text", "text: not an archive of a known format"},
        {"test -q x.cab", "x.cab: p (disk d), from which it goes on, is missing"},
        {"test -q " + data + "refuse-next.cab",
         data + "refuse-next.cab: b.cab (disk disk2), in which it goes on, is missing"},
        {"test " + data + "refuse-version.cab", data + "refuse-version.cab: unsupported cabinet version"},
        {"test -q --formats none x.cab", "no formats found in none: No such file or directory\n"
                                         "harbor: x.cab: p (disk d), from which it goes on, is missing"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(run(each.arguments), failed("harbor: " + each.complaint + "\n"));
    EXPECT_EQ(tree(place.path), "empty text x.cab ") << "a refusal leaves nothing behind";
    for (const std::string usage :
         {"", "expand", "expand -", "expand --overwrite never --overwrite always x.cab",
          "test --encoding none x.cab"})
        EXPECT_EQ(run(usage).status, 2) << usage;
}

TEST_F(Program, FindsTheVolumesOfASet) {
    const std::string data = "cp " HARBOR_TEST_DATA "/set-tiny[123].cab .; ";
    const struct {
        std::string arguments, before;
        support::transcript seen;
    } cases[] = {
        {"test set-tiny1.cab", "", fine("note.bin: OK\nhello.bin: OK\nset-tiny1.cab: OK, 2 files, 713 B\n")},
        {"test ./set-tiny3.cab", "",
         fine("note.bin: OK\nhello.bin: OK\n./set-tiny3.cab: OK, 2 files, 713 B\n")},
        {"test -q set-tiny1.cab", "mv set-tiny2.cab SET-Tiny2.CAB;", fine()},
        {"test -q a c b", "mv set-tiny1.cab b; mv set-tiny2.cab c; mv set-tiny3.cab a;", fine()},
        {"test -q - set-tiny3.cab fifo",
         "mkfifo fifo; mkdir d; mv set-tiny2.cab d; cat d/* > fifo & cat set-tiny1.cab |", fine()},
        {"test -q set-tiny1.cab", "cp set-tiny3.cab set-tiny2.cab;",
         failed("harbor: set-tiny1.cab: set-tiny2.cab has the number 2 in its set, and number 1 is needed\n"
                "harbor: set-tiny1.cab: note.bin: incomplete after 282 bytes\n"
                "harbor: set-tiny1.cab: hello.bin: no data arrived\n")},
        {"test -q set-tiny1.cab", "rm set-tiny2.cab; mkdir set-tiny2.cab;",
         failed("harbor: set-tiny1.cab: set-tiny2.cab, in which it goes on, is missing\n"
                "harbor: set-tiny1.cab: note.bin: incomplete after 282 bytes\n"
                "harbor: set-tiny1.cab: hello.bin: no data arrived\n")},
    };
    for (const auto& each : cases)
        EXPECT_EQ(run(each.arguments, "rm -rf *; " + data + each.before), each.seen) << each.before;
}

TEST_F(Program, UsesTheOtherPlugInsWhenSomeAreFaulty) {
    namespace files = std::filesystem;
    const auto good = read_file(HARBOR_FORMATS "/cab.so");
    files::create_directories(place / "f/folder.so");
    write_file(place / "f/cut-data.so", good.substr(0, 20000));
    write_file(place / "f/cut-head.so", good.substr(0, 100));
    write_file(place / "f/text.so", "text");
    files::create_symlink("none", place / "f/link.so");
    files::copy_file(HARBOR_FAULTY_PLUG_IN, place / "f/a-constructor.so");
    files::copy_file(HARBOR_FAULTY_PLUG_IN, place / "f/raises.so");
    files::copy_file(HARBOR_FORMATS "/cab.so", place / "f/z.so");
    auto other = good;
    other[other.find("libharbor6.so.1") + 14] = '7';
    write_file(place / "f/seven.so", other);
    const auto seen = run("test --formats f " HARBOR_TEST_DATA "/lzx17-mixed.cab", "mkfifo f/fifo.so;");
    EXPECT_EQ(seen.err, "harbor: f/a-constructor.so: early fault\n"
                        "harbor: f/cut-data.so: the file is cut short\n"
                        "harbor: f/cut-head.so: the file is cut short\n"
                        "harbor: f/fifo.so: not a regular file\n"
                        "harbor: f/folder.so: Is a directory\n"
                        "harbor: f/link.so: No such file or directory\n"
                        "harbor: f/raises.so: late fault\n"
                        "harbor: f/seven.so: built for version 7 of the interface of libharbor6; this one "
                        "has version 1\n"
                        "harbor: f/text.so: not a shared library\n");
    EXPECT_NE(seen.out.find("/lzx17-mixed.cab: OK, "), seen.out.npos);
    EXPECT_EQ(seen.status, 1);
}

TEST_F(Program, TakesTheItemsOfAPlugInThatHasNoPass) {
    std::filesystem::create_directories(place / "f");
    std::filesystem::copy_file(HARBOR_ITEM_PLUG_IN, place / "f/item.so");
    const auto record = [](const std::string& name, const std::string& content) {
        return static_cast<char>(name.size()) + name + static_cast<char>(content.size()) + content;
    };
    const auto folder = record("d/", record("b", "22") + record("c", "333"));
    const auto inner = "ITEM" + record("one", "1") + record("two", "2");
    write_file(place / "x.item", "ITEM" + record("a", "1") + folder + record("in.item", inner));
    write_file(place / "y.item", "ITEM" + record("d/", record("b", "22") + record("..", "3")));
    write_file(place / "bad.item", "ITEM" + record("a", "1") + record("bad", "damaged"));
    const struct {
        std::string arguments;
        support::transcript seen;
        std::string made;
    } cases[] = {
        {"list --tree x.item", fine("x.item\n├── a\n├── d/\n│   ├── b\n│   └── c\n└── in.item\n4 files\n"),
         ""},
        {"test x.item", fine("a: OK\nd/b: OK\nd/c: OK\nin.item: OK\nx.item: OK, 4 files, 22 B\n"), ""},
        {"expand -q x.item", fine(), "x/ x/a x/d/ x/d/b x/d/c x/in.item "},
        {"expand -q x.item -C n --nested", fine(), "n/ n/a n/d/ n/d/b n/d/c n/in/ n/in/one n/in/two "},
        {"expand -q x.item -C o -- '[bo]'", fine(), "o/ o/d/ o/d/b "},
        {"expand -q y.item", failed("harbor: y.item: d/..: its name is reserved\n"), "d/ d/b "},
        {"expand -q bad.item",
         failed("harbor: bad.item: this file is damaged\nharbor: bad.item: bad: no data arrived\n"),
         "bad/ bad/a "},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(run(each.arguments, "mkdir t; cp *.item t; cd t; HARBOR_FORMATS=../f"), each.seen);
        for (const auto* const given : {"x.item", "y.item", "bad.item"})
            std::filesystem::remove(place / "t" / given);
        EXPECT_EQ(tree(place / "t"), each.made) << each.arguments;
        std::filesystem::remove_all(place / "t");
    }
}

#ifndef HARBOR_NO_SANDBOX
TEST_F(Program, KeepsAPlugInFromReachingAnythingElse) {
    std::filesystem::create_directories(place / "f");
    std::filesystem::create_directories(place / "out");
    std::filesystem::copy_file(HARBOR_FAULTY_PLUG_IN, place / "f/escape.so");
    std::filesystem::copy_file(HARBOR_FORMATS "/cab.so", place / "f/z.so");
    save(cabinet().file("a\\\x82", "1"), "out/x.cab");
    write_file(place / "precious", "");
    const auto escape = [&](const std::string& option) {
        return run("expand -q --overwrite always --encoding CP437 --formats f out/x.cab -C out" + option,
                   "ESCAPE_TO=/bin/echo");
    };
    EXPECT_EQ(escape(""), fine());
    EXPECT_EQ(support::tree(place.path), "f/ f/escape.so f/z.so out/ out/a/ out/a/é out/x.cab precious ");
    EXPECT_EQ(escape(" --no-sandbox"),
              (support::transcript{0, "run\n", "read create remove socket signal fork "}));
}
#endif

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they reserve more than any limit here
TEST_F(Program, ReportsThatMemoryRanOut) {
    cabinet many;
    for (int i = 0; i < 5000; ++i)
        many.file(std::to_string(i), "");
    save(many);
    const auto run_within = [&](int kilobytes, const std::string& arguments) {
        return run(arguments, "ulimit -v " + std::to_string(kilobytes) + ";");
    };
    int enough = 6000; // to load libraries and start
    while (run_within(enough, "--version $(seq 10000 20000)").status != 0)
        enough += 100;
    for (const std::string arguments : {"test $(seq 10000 20000)", "list --tree x.cab"}) {
        unsigned reported = 0;
        for (int more = 0; more < 16000; more += 2000) {
            const auto seen = run_within(enough + more, arguments);
            EXPECT_TRUE(seen.status == 0 || seen.status == 1) << arguments << ' ' << seen;
            reported += seen.err.find("out of memory\n") != std::string::npos;
        }
        EXPECT_GT(reported, 0u) << arguments;
    }
}
#endif
} // namespace

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
        return run("test x.cab");
    };
    EXPECT_EQ(short_of_blocks(4), fine("x.cab: OK\n"));
    EXPECT_EQ(short_of_blocks(3), failed("harbor: x.cab: c: incomplete after 2 bytes\n"));
    EXPECT_EQ(short_of_blocks(1), failed("harbor: x.cab: a: incomplete after 4 bytes\n"
                                         "harbor: x.cab: b: no data arrived\n"
                                         "harbor: x.cab: c: no data arrived\n"));
    EXPECT_EQ(short_of_blocks(0), failed("harbor: x.cab: a: incomplete after 0 bytes\n"
                                         "harbor: x.cab: b: no data arrived\n"
                                         "harbor: x.cab: c: no data arrived\n"));
    save(cabinet().file("empty", ""));
    EXPECT_EQ(run("test x.cab"), fine("x.cab: OK\n"));
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
        const auto file = run("expand x.cab --overwrite");
        EXPECT_EQ(file.status, 1) << length;
        EXPECT_NE(file.err.find(end), std::string::npos) << length << ": " << file.err;
        if (length % 5 == 0) {
            EXPECT_EQ(run("expand - -C out --overwrite", "cat x.cab |").status, 1) << length;
        }
    }
    write_file(place / "x.cab", whole);
    EXPECT_EQ(run("expand - -C piped", "cat x.cab |"), fine());
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
    EXPECT_EQ(run("expand x.cab -C t --encoding ISO-2022-JP").status, 1);
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
    EXPECT_EQ(run("expand --nested x.cab"),
              failed("harbor: x.cab: many.cab" + kept + "harbor: x.cab: one.cab" + kept));
    EXPECT_EQ(tree(place / "x"), "many.cab one.cab ");
}

TEST_F(Program, ExpandsInOnePassWithoutATemporaryFile) {
    cabinet large;
    large.file("in.cab", cabinet().file("a", "1").file("b", "2").bytes()).folder(support::mszip);
    for (const std::string name : {"1", "2", "3", "4", "5"})
        large.file(name, std::string(9000000, 'z'));
    save(large);
    const auto limited = run("expand --nested x.cab -C t", "ulimit -f 20480;");
    EXPECT_EQ(limited.status, 1);
    EXPECT_TRUE(limited.err.starts_with("harbor: x.cab: archives inside it are kept as files: cannot ") &&
                limited.err.ends_with(": File too large\n"))
        << limited;
    EXPECT_EQ(tree(place / "t"), "1 2 3 4 5 in.cab ");
    EXPECT_EQ(read_file(place / "t/5").size(), 9000000u);
}

TEST_F(Program, ListsAndDescribes) {
    save(cabinet().file("a", "123").file("d\\\xE4\n", ""));
    EXPECT_EQ(run("list x.cab"), fine("           3  2004-02-29 13:37:42  a\n"
                                      "           0  2004-02-29 13:37:42  d/\xC3\xA4\\x0a\n"));
    EXPECT_EQ(run("list --encoding CP437 --json x.cab"),
              fine("[\n  {\n    \"archive\": \"x.cab\",\n    \"files\": [\n"
                   "      {\n        \"path\": \"a\",\n        \"size\": 3,\n"
                   "        \"modified\": \"2004-02-29T13:37:42\"\n      },\n"
                   "      {\n        \"path\": \"d/\xCE\xA3\\n\",\n        \"size\": 0,\n"
                   "        \"modified\": \"2004-02-29T13:37:42\"\n      }\n    ],\n"
                   "    \"complete\": true\n  }\n]\n"));
    EXPECT_EQ(
        run("list --json none x.cab 2>&1 | tr -d ' \n'; exit 1").out,
        "[{\"archive\":\"none\",\"files\":[harbor:none:Nosuchfileordirectory],\"complete\":false},"
        "{\"archive\":\"x.cab\",\"files\":[{\"path\":\"a\",\"size\":3,\"modified\":\"2004-02-29T13:37:42\"},"
        "{\"path\":\"d/\xC3\xA4\\n\",\"size\":0,\"modified\":\"2004-02-29T13:37:42\"}],"
        "\"complete\":true}]");
    EXPECT_EQ(run("formats"), fine("cab\n  longName: CAB\n  suffix: .cab\n  mimeType: application/x-cab\n"
                                   "  expandsArchives: yes\n  createsArchives: no\n  recoversArchives: no\n"
                                   "  isFolder: yes\n  isFile: no\n  isSegmented: no\n"));
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
        {"expand x.cab", "x.cab: begins as CAB archives do, but its header is damaged or says that it "
                         "continues another archive"},
        {"test " + data + "refuse-next.cab",
         data + "refuse-next.cab: expansion of segmented CAB archives not supported"},
        {"test " + data + "refuse-version.cab", data + "refuse-version.cab: unsupported cabinet version"},
        {"test --formats none x.cab", "no formats found in none: No such file or directory\n"
                                      "harbor: x.cab: not an archive of a known format"},
    };
    for (const auto& each : cases)
        EXPECT_EQ(run(each.arguments), failed("harbor: " + each.complaint + "\n"));
    EXPECT_EQ(tree(place.path), "empty text x.cab ") << "a refusal leaves nothing behind";
    for (const std::string usage :
         {"", "expand", "expand -", "expand --keep --overwrite x.cab", "test --encoding none x.cab"})
        EXPECT_EQ(run(usage).status, 2) << usage;
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
    const auto seen = run("test --formats f " HARBOR_TEST_DATA "/lzx17-mixed.cab", "mkfifo f/fifo.so;");
    EXPECT_EQ(seen.err, "harbor: f/a-constructor.so: early fault\n"
                        "harbor: f/cut-data.so: the file is cut short\n"
                        "harbor: f/cut-head.so: the file is cut short\n"
                        "harbor: f/fifo.so: not a regular file\n"
                        "harbor: f/folder.so: Is a directory\n"
                        "harbor: f/link.so: No such file or directory\n"
                        "harbor: f/raises.so: late fault\n"
                        "harbor: f/text.so: not a shared library\n");
    EXPECT_EQ(seen.out, HARBOR_TEST_DATA "/lzx17-mixed.cab: OK\n");
    EXPECT_EQ(seen.status, 1);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // they reserve more than any limit here
TEST_F(Program, ReportsThatMemoryRanOut) {
    cabinet many;
    for (int i = 0; i < 5000; ++i)
        many.file(std::to_string(i), "");
    save(many);
    for (const std::string arguments : {"test $(seq 10000 20000)", "list --json x.cab"}) {
        unsigned reported = 0;
        for (int kilobytes = 6000; kilobytes < 24000; kilobytes += 2000) {
            const auto seen = run(arguments, "ulimit -v " + std::to_string(kilobytes) + ";");
            const bool loaded = seen.status != 127;
            EXPECT_TRUE(!loaded || seen.status == 0 || seen.status == 1) << arguments << ' ' << seen;
            reported += loaded && seen.err.find("out of memory\n") != std::string::npos;
        }
        EXPECT_GT(reported, 0u) << arguments;
    }
}
#endif
} // namespace

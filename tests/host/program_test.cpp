#include "support/cabinet_writer.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

// The program as its user sees it: arguments in, exit status and exact output out.

namespace {

using support::cabinet;
using support::read_file;
using support::tree;
using support::write_file;

struct transcript {
    int status = -1;
    std::string out;
    std::string err;

    friend bool operator==(const transcript&, const transcript&) = default;
    friend std::ostream& operator<<(std::ostream& stream, const transcript& shown) {
        return stream << "status " << shown.status << "\n-- out\n" << shown.out << "-- err\n" << shown.err;
    }
};

class Program : public testing::Test {
protected:
    /// Runs `harbor` with `arguments`, as a shell reads them, in `place`; `before` is put in front.
    transcript run(const std::string& arguments, const std::string& before = {}) {
        const auto shell = "cd '" + place.path.string() + "' && { " + before + " '" HARBOR_PROGRAM "' " +
                           arguments + "; } >'" + (logs / "out").string() + "' 2>'" +
                           (logs / "err").string() + "'";
        const int ended = std::system(shell.c_str());
        return {WIFEXITED(ended) ? WEXITSTATUS(ended) : -1, read_file(logs / "out"), read_file(logs / "err")};
    }
    void save(const cabinet& made, const std::string& name = "x.cab") {
        write_file(place / name, made.bytes());
    }

    static transcript fine(const std::string& out = {}) { return {0, out, {}}; }
    static transcript failed(const std::string& err, const std::string& out = {}) { return {1, out, err}; }

    support::temporary_folder place;
    support::temporary_folder logs;
};

TEST_F(Program, ExpandsEachCorpusCabinetToItsDigests) {
    for (const auto& entry : std::filesystem::directory_iterator(HARBOR_TEST_DATA))
        if (const auto name = entry.path().filename().string(); !name.starts_with("refuse")) {
            EXPECT_EQ(run("expand " HARBOR_TEST_DATA "/" + name + " -C " + name).status, name == "SHA256SUMS")
                << name;
        }
    const auto checked =
        run("--version", "sha256sum --check --quiet --strict '" HARBOR_TEST_DATA "/SHA256SUMS' &&");
    EXPECT_EQ(checked.status, 0) << checked;
}

TEST_F(Program, ReplacesOnlyOnRequest) {
    save(cabinet().file("a", "one").file("d\\b", "two"));
    EXPECT_EQ(run("expand x.cab -v"), fine("a\nd/b\n"));
    EXPECT_EQ(tree(place / "x"), "a d/ d/b ");
    save(cabinet().file("a", "three").file("d\\b", "four").file("d\\c", "five"));
    EXPECT_EQ(run("expand x.cab"),
              failed("harbor: x.cab: a: exists already (--overwrite replaces, --keep keeps such files)\n"
                     "harbor: x.cab: d/b: exists already (--overwrite replaces, --keep keeps such files)\n"));
    EXPECT_EQ(run("expand x.cab --keep -v"), fine("a: kept\nd/b: kept\nd/c: kept\n"));
    EXPECT_EQ(read_file(place / "x/a") + read_file(place / "x/d/b") + read_file(place / "x/d/c"),
              "onetwofive");
    EXPECT_EQ(run("expand x.cab --overwrite"), fine());
    EXPECT_EQ(read_file(place / "x/a") + read_file(place / "x/d/b"), "threefour");

    cabinet damaged;
    damaged.folder(support::stored).file({.name = "d\\b", .size = 5});
    save(damaged.block({.payload = "ha"}).block({.payload = "lf!", .checksum = 1}));
    EXPECT_EQ(run("expand x.cab --overwrite"), failed("harbor: x.cab: d/b: CRC mismatch, data is invalid\n"
                                                      "harbor: x.cab: d/b: incomplete after 2 bytes\n"));
    EXPECT_EQ(read_file(place / "x/d/b"), "four") << "the old file stays as it was";
    EXPECT_EQ(tree(place / "x"), "a d/ d/b d/c ");
}

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

TEST_F(Program, StaysInsideItsFolder) {
    save(cabinet()
             .file("../../up", "1")
             .file("\\rooted", "2")
             .file("d\\..", "3")
             .file("a\x1b[2J", "4")
             .file("a", "5")
             .file("a", "6")
             .file("a\\b", "7")
             .file("d\\", "8")
             .file("d", "9"));
    EXPECT_EQ(run("test x.cab"), failed("harbor: x.cab: d/..: its name is reserved\n"
                                        "harbor: x.cab: a: the archive contains another file of that name\n"
                                        "harbor: x.cab: a/b: cannot use folder a: it is not a folder\n"
                                        "harbor: x.cab: d/: its name is empty\n"
                                        "harbor: x.cab: d: a folder of that name exists\n"));
    EXPECT_EQ(run("expand x.cab -C t"),
              failed("harbor: x.cab: d/..: its name is reserved\n"
                     "harbor: x.cab: a: exists already (--overwrite replaces, --keep keeps such files)\n"
                     "harbor: x.cab: a/b: cannot use folder a: it is not a folder\n"
                     "harbor: x.cab: d/: its name is empty\n"
                     "harbor: x.cab: d: a folder of that name exists\n"));
    EXPECT_EQ(tree(place.path), "t/ t/a t/a\x1b[2J t/d/ t/rooted t/up x.cab ");
    EXPECT_EQ(read_file(place / "t/a"), "5");
    EXPECT_EQ(run("expand x.cab -C u --overwrite").status, 1);
    EXPECT_EQ(read_file(place / "u/a"), "6");
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
}

TEST_F(Program, ExpandsOnlySelectedFiles) {
    save(cabinet().file("a.txt", "1").file("d\\b.txt", "2").file("e\\c.dat", "3"));
    EXPECT_EQ(run("expand x.cab 'b.*'"), fine());
    EXPECT_EQ(tree(place / "x"), "d/ d/b.txt ");
    EXPECT_EQ(run("expand x.cab e none -C t"), failed("harbor: x.cab: none: not found in the archive\n"));
    EXPECT_EQ(tree(place / "t"), "e/ e/c.dat ");
}

TEST_F(Program, MovesASingleItemOutOfItsFolder) {
    save(cabinet().file("x", "1"));
    EXPECT_EQ(run("expand x.cab"), fine());
    EXPECT_EQ(tree(place.path), "x x.cab ");
    EXPECT_EQ(run("expand x.cab"), failed("harbor: x.cab: x: exists already; the new one stays in the folder "
                                          "made for it\n"));
    EXPECT_EQ(tree(place.path), "x x.cab x.contents/ x.contents/x ");
    std::filesystem::remove_all(place / "x.contents");
    save(cabinet().file("x", "2"));
    EXPECT_EQ(run("expand x.cab --overwrite"), fine());
    EXPECT_EQ(tree(place.path) + read_file(place / "x"), "x x.cab 2");
    save(cabinet().file("y\\a", "3").file("y\\b", "4"), "y.cab");
    EXPECT_EQ(run("expand y.cab"), fine());
    EXPECT_EQ(tree(place.path), "x x.cab y.cab y/ y/a y/b ");
}

TEST_F(Program, ExpandsArchivesInsideArchives) {
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
    EXPECT_EQ(run("expand --nested x.cab"),
              failed("harbor: x.cab: cut.cab: kept as a file: cut short: the input ends at byte 120\n"));
    EXPECT_EQ(tree(place / "x"), "cut.cab d/ d/two/ d/two/a d/two/b/ d/two/b/c deep none/ one plain ");
    EXPECT_EQ(read_file(place / "x/deep") + read_file(place / "x/one") + read_file(place / "x/d/two/b/c"),
              "downalone2");
    EXPECT_EQ(read_file(place / "x/cut.cab"), cut);
    EXPECT_EQ(run("expand --nested --depth 2 - -C t <x.cab").err,
              "harbor: -: 1/2/3.cab: kept as a file: archives are nested more than 2 deep (--depth)\n"
              "harbor: -: cut.cab: kept as a file: cut short: the input ends at byte 120\n");
    EXPECT_EQ(tree(place / "t"), "3.cab cut.cab d/ d/two/ d/two/a d/two/b/ d/two/b/c none/ one plain ");

    // Existing files block both the content of an archive and the archive itself.
    std::filesystem::create_directory(place / "u");
    write_file(place / "u/1", "");
    write_file(place / "u/1.cab", "");
    EXPECT_EQ(run("expand --nested x.cab -C u").err,
              "harbor: x.cab: 1.cab: kept as a file: a file named 1 exists\n"
              "harbor: x.cab: 1.cab: exists already (--overwrite replaces, --keep keeps such files)\n"
              "harbor: x.cab: cut.cab: kept as a file: cut short: the input ends at byte 120\n");
    EXPECT_EQ(tree(place / "u"), "1 1.cab cut.cab d/ d/two/ d/two/a d/two/b/ d/two/b/c none/ one plain ");
}

TEST_F(Program, LimitsWhatInnerArchivesExpandTo) {
    cabinet many;
    for (int i = 100000; i < 145000; ++i)
        many.file(std::to_string(i) + "\\d\\x", "");
    cabinet around;
    around.folder(support::mszip).file("many.cab", many.bytes());
    save(around.file("one.cab", cabinet().file("one", "1").bytes()));
    const auto limit = std::to_string(100000 + std::filesystem::file_size(place / "x.cab") / 8);
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

#ifndef __SANITIZE_ADDRESS__ // whose runtime reserves more than any limit here
TEST_F(Program, ReportsThatMemoryRanOut) {
    cabinet many;
    for (int i = 0; i < 5000; ++i)
        many.file(std::to_string(i), "");
    save(many);
    for (const std::string arguments : {"test $(seq 10000 20000)", "list --json x.cab"}) {
        unsigned reported = 0;
        for (int kilobytes = 6000; kilobytes < 24000; kilobytes += 1000) {
            const auto seen = run(arguments, "ulimit -v " + std::to_string(kilobytes) + ";");
            const bool loaded = seen.status != 127;
            EXPECT_TRUE(!loaded || seen.status == 0 || seen.status == 1) << arguments << ' ' << seen;
            reported += loaded && seen.err.find("out of memory\n") != std::string::npos;
        }
        EXPECT_GT(reported, 0u) << arguments;
    }
}
#endif

TEST_F(Program, ReportsDiskErrors) {
    save(cabinet().file("a", "fits").file("b", std::string(100000, 'b')).file("c", "more"));
    const auto limited = run("expand x.cab", "ulimit -f 60;");
    EXPECT_EQ(limited.status, 1);
    EXPECT_EQ(limited.err.find("harbor: x.cab: cannot write b: File too large\n"
                               "harbor: x.cab: b: incomplete after "),
              0u);
    EXPECT_EQ(read_file(place / "x/a"), "fits");
    std::filesystem::remove_all(place / "x");
    EXPECT_EQ(run("expand x.cab -C x.cab"), failed("harbor: x.cab: cannot use folder x.cab: it is a file\n"));
    std::filesystem::create_directory_symlink(logs.path, place / "x");
    EXPECT_EQ(run("expand x.cab"), failed("harbor: x.cab: cannot use folder x: it is a symbolic link\n"));
    EXPECT_EQ(run("expand x.cab -C x"), fine()) << "the user named this link";
    EXPECT_EQ(run("list x.cab >/dev/full"),
              failed("harbor: cannot write to the standard output: No space left on device\n"));
    EXPECT_EQ(run("list x.cab | true; exit 0").err, "");
}

} // namespace

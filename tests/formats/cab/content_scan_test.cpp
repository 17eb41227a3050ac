#include "formats/cab/cab_archive.h"
#include "harbor6/model/container.h"
#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"
#include "support/zlib_streams.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>

using pattern::AcquiredPtr;
using support::block_record;
using support::cabinet;
using support::cabinet_host;
using support::mszip;

TEST(ContentScan, PlacesFilesByTheirNormalisedPath) {
    const std::pair<const char*, const char*> places[] = {
        {"x", "x=1\n"},
        {"/x", "x=1\n"},
        {"a\\b\\x", "a/\na/b/\na/b/x=1\n"},
        {"../../x", "x=1\n"},
        {"./a/../b/x", "a/\na/b/\na/b/x=1\n"},
        {"a//b///x", "a/\na/b/\na/b/x=1\n"},
        {"a/./x", "a/\na/x=1\n"},
        {".../..b/.c/x", ".../\n.../..b/\n.../..b/.c/\n.../..b/.c/x=1\n"},
        {"a/.../x", "a/\na/.../\na/.../x=1\n"},
        {"a./b../x", "a./\na./b../\na./b../x=1\n"},
        {"/a/x", "/\n/a/\n/a/x=1\n"}, // the leading separator stays: a folder without a name
    };
    for (const auto& [path, tree] : places) {
        cabinet_host host(cabinet().file(path, "1").bytes());
        EXPECT_EQ(host.expand(), "");
        EXPECT_EQ(host.tree(), tree) << path;
    }
}

TEST(ContentScan, AsksOnceForEachTopLevelFolderAndListsWhatStandsAtTheTop) {
    const auto bytes = cabinet().file("a/x", "1").file("r", "2").file("a/y", "3").file("a/b/z", "4").bytes();
    const std::string rest = "sourceFile x -> a\nsourceFile r -> root\nsourceFile y -> a\n"
                             "targetFolder b -> a\nsourceFile z -> b\n";
    for (const bool present : {false, true}) {
        cabinet_host host(bytes);
        if (present)
            host.tree_root->dir("a");
        const AcquiredPtr<harbor6::ContainerAdaptor> list(new harbor6::StdVectorContainer);
        EXPECT_EQ(host.expand(list.get()), "");
        EXPECT_EQ(host.transcript(),
                  (present ? "conflict a -> root folders\n" : "targetFolder a -> root\n") + rest);
        std::int64_t listed = 0;
        EXPECT_TRUE(list->getNumItems(listed, false) && listed == 2); // a and r
        EXPECT_EQ(support::name_of(*AcquiredPtr(list->acquireFirstItem())), "a");
        EXPECT_EQ(host.tree(), "a/\na/b/\na/b/z=4\na/x=1\na/y=3\nr=2\n");
        EXPECT_EQ(host.tree_root->children.front()->commits, present ? 0u : 1u);
    }
}

TEST(ContentScan, FollowsTheClientInAClashAtTheTop) {
    using question = support::recording_client::question;
    const auto bytes = cabinet().file("a/x", "1").file("a/y", "2").file("r", "3").bytes();
    const struct {
        const char* name;
        const char* declined;
        bool folder; ///< whether the existing item named a is one
        std::function<void(support::memory_host&, question&)> answer;
        const char* tree;
        const char* refusal;
        int asked;
    } cases[] = {
        {"a refused conflict", "conflict a", false, [](auto&, auto&) {}, "a=\nr=3\nx=1\ny=2\n", "", 2},
        {"a file that stays in the way", "", false, [](auto&, auto&) {}, "a=\n",
         "un: targetNameConflict failed to resolve conflict", 1},
        {"an existing folder", "", true, [](auto&, auto&) {}, "a/\na/x=1\na/y=2\nr=3\n", "", 1},
        {"another name", "", false, [](auto&, auto& q) { *q.name = "b"; }, "a=\nb/\nb/x=1\nb/y=2\nr=3\n", "",
         1},
        {"no parent", "", true, [](auto&, auto& q) { *q.target = nullptr; }, "a/\nr=3\n", "", 2},
        {"another parent", "", false,
         [](auto& host, auto& q) {
             auto& other = host.tree_root->children.empty() ? *host.tree_root : host.tree_root->dir("o");
             *q.target = static_cast<harbor6::Folder*>(host.folder(other).detach());
         },
         "a=\no/\no/a/\no/a/x=1\no/a/y=2\nr=3\n", "", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        cabinet_host host(bytes);
        c.folder ? host.tree_root->dir("a") : host.tree_root->file("a", "");
        host.client.declined = {c.declined};
        int asked = 0;
        host.client.on["conflict a"] = [&](auto& put) {
            ++asked;
            c.answer(host, put);
        };
        EXPECT_EQ(host.expand(), c.refusal);
        EXPECT_EQ(host.tree(), c.tree);
        EXPECT_EQ(asked, c.asked);
    }
}

TEST(ContentScan, ARefusedFolderEndsThePassQuietly) {
    cabinet_host host(cabinet().file("r", "1").file("a/b/x", "2").file("c/y", "3").bytes() + "no block");
    host.client.declined = {"targetFolder b"};
    EXPECT_EQ(host.expand(), "");
    EXPECT_EQ(host.transcript(), "sourceFile r -> root\ntargetFolder a -> root\ntargetFolder b -> a: no\n");
    EXPECT_EQ(host.tree(), "a/\n"); // r is an object that nothing was written to
}

TEST(ContentScan, CutsTheFolderRightWhateverIsWanted) {
    std::mt19937 random(20040229);
    for (const std::uint16_t method : {support::stored, mszip}) {
        std::vector<std::string> texts;
        cabinet made;
        made.header.reserve = support::reserve_area{.header = "abc", .folder_size = 5, .data_size = 3};
        made.folder(method);
        for (unsigned i = 0; i < 12; ++i) {
            if (i == 7)
                made.folder(mszip);
            texts.push_back(zlib_streams::words(i % 4 == 3 ? 0 : random() % 50000, i));
            made.file("d\\" + std::to_string(i), texts.back());
        }
        for (unsigned round = 0; round < 12; ++round) {
            cabinet_host host(made.bytes());
            host.archive->options.wanted_only = round % 2;
            std::multiset<std::string> tree{"d/\n"};
            for (unsigned i = 0; i < 12; ++i) {
                if (round == 0 || random() % 2)
                    tree.insert("d/" + std::to_string(i) + "=" + texts[i] + "\n");
                else
                    host.client.declined.insert("sourceFile " + std::to_string(i));
            }
            ASSERT_EQ(host.expand(), "");
            ASSERT_TRUE(host.tree() == std::accumulate(tree.begin(), tree.end(), std::string())) << round;
        }
    }
}

TEST(ContentScan, RefusesInExactWordsAndKeepsWhatWasMade) {
    const std::string header = "format::cab::archive_header: ", reader = "format::cab::item_reader: ",
                      index = "harbor6::cab::Archive::addContentTo: invalid folder_index in file_header",
                      crc = "crc format::cab::data_header: CRC mismatch, data is invalid",
                      segmented = "un::implemented: expansion of segmented CAB archives not supported";
    const struct {
        const char* name;
        std::function<void(cabinet&)> edit; ///< of a sound cabinet
        std::string refusal, tree;
        std::size_t length = ~std::size_t{0}; ///< of the cabinet, cut
    } cases[] = {
        {"a sound cabinet", [](auto&) {}, "", "a=12345\nb=67890\n"},
        {"no bytes", [](auto&) {}, header + "bad header artifact", "", 0},
        {"a header cut short", [](auto&) {}, "stream::little_endian_input: unexpected end of stream", "", 40},
        {"another version", [](auto& c) { c.header.version = 0x0104; },
         header + "unsupported cabinet version", ""},
        {"a previous cabinet", [](auto& c) { c.header.previous.emplace(); }, "", "a=12345\nb=67890\n"},
        {"a next cabinet", [](auto& c) { c.header.next.emplace(); }, segmented, ""},
        {"a next cabinet and no names", [](auto& c) { c.header.next.emplace(); }, segmented, "",
         38}, // nothing beyond the header is read
        {"no folders", [](auto& c) { c.header.folder_count = std::uint16_t{0}; }, index, ""},
        {"a folder index too large", [](auto& c) { c.files[1].folder_index = 1; }, index, ""},
        {"a file of three cabinets", [](auto& c) { c.files[1].folder_index = 0xFFFF; }, index, ""},
        {"Quantum", [](auto& c) { c.folders[0].compression = support::quantum; },
         reader + "quantum compression method not supported", "a=\n"},
        {"a damaged block without a file",
         [](auto& c) { c.block({.payload = "x", .checksum = 1}), c.files.pop_back(); }, crc, "a=12345\n"},
        {"no blocks", [](auto& c) { c.folders[0].block_count = std::uint16_t{0}; }, "", "a=\n"},
        {"empty files alone", [](auto& c) { c = cabinet().file("a", "").file("b", ""); }, "", "a=\nb=\n"},
        {"no files", [](auto& c) { c.files.clear(); }, "", ""},
        {"a damaged block and no files",
         [](auto& c) { c.block({.payload = "x", .checksum = 1}), c.files.clear(); }, crc, ""},
        // The file that the failure hits is committed with what it has, the one behind it isn't begun.
        {"a failure inside a file",
         [](auto& c) {
             c.folders[0].block_size = 8;
             c.file("c", "abc").file("d", "").block({.payload = "abc", .checksum = 1});
             c.folders[0].content.resize(8);
         },
         crc, "a=12345\nb=678\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        cabinet made;
        c.edit(made.file("a", "12345").file("b", "67890"));
        cabinet_host host(support::cut(made.bytes(), c.length));
        EXPECT_EQ(host.expand(), c.refusal);
        EXPECT_EQ(host.tree(), c.tree);
        for (const auto& file : host.tree_root->children)
            EXPECT_EQ(file->commits, 1u);
    }
}

TEST(ContentScan, FollowsTheArchivesOptions) {
    const auto whole = cabinet().file("a/bcd", "123").file("e", "45").bytes();
    const auto nameless = support::cut(cabinet().file("a", "").bytes(), 36 + 8 + 17);
    cabinet neighboured;
    neighboured.header.previous.emplace().disk = "disk";
    neighboured.folders.clear();
    const auto diskless = support::cut(neighboured.bytes(), 36 + 1 + 4);
    const auto short_at = [](int end) {
        return "format::cab: cut short: the input ends at byte " + std::to_string(end);
    };
    const struct {
        harbor6::Archive::Options options;
        std::string bytes, refusal, tree;
    } cases[] = {
        {{}, nameless, "", "a=\n"},
        {{.published_rules = true}, nameless, short_at(61), ""},
        {{}, diskless, "", ""},
        {{.published_rules = true}, diskless, short_at(41), ""},
        {{.published_rules = true}, whole, "", "a/\na/bcd=123\ne=45\n"},
        {{.longest_path = 5}, whole, "", "a/\na/bcd=123\ne=45\n"},
        {{.longest_path = 4}, whole, "", "a/bc=123\ne=45\n"},
    };
    for (const auto& c : cases) {
        cabinet_host host(c.bytes);
        host.archive->options = c.options;
        EXPECT_EQ(host.expand(), c.refusal);
        EXPECT_EQ(host.tree(), c.tree);
    }
}

TEST(ContentScan, ReadsNoFurtherThanTheWantedFilesNeed) {
    const block_record damaged{.payload = "xyz", .checksum = 1};
    cabinet made;
    made.file("a", "12345").file("b", "").block(damaged);        // wanted
    made.folder(support::quantum).block(damaged).block(damaged); // no file of it is
    made.file({.name = "c", .size = 6, .folder_index = 1});
    made.folder(support::stored).file("d", "678").file("e", "90"); // the first file is wanted
    made.folders.back().block_size = 3;
    made.block(damaged).folder(mszip).block(damaged);
    const auto bytes = made.bytes();
    const struct {
        std::set<std::string> declined;
        const char *refusal, *tree;
        std::size_t missing = 0; ///< bytes at the end of the cabinet
    } cases[] = {
        {{"c", "e"}, "", "a=12345\nb=\nd=678\n", 32},
        {{"a", "b", "c"}, "", "d=678\ne=90\n", 22},
        {{"c", "d", "e"}, "", "a=12345\nb=\n", 76},
        {{"a", "b", "c", "d", "e"}, "", "", 89},
        {{"d", "e"},
         "format::cab::item_reader: quantum compression method not supported",
         "a=12345\nb=\nc=\n"},
        {{"c", "e"}, "format::cab::data_header: cut short: the input ends at byte 203", "a=12345\nb=\n", 44},
    };
    for (const auto& c : cases) {
        cabinet_host host(support::cut(bytes, bytes.size() - c.missing));
        host.archive->options.wanted_only = true;
        for (const auto& name : c.declined)
            host.client.declined.insert("sourceFile " + name);
        EXPECT_EQ(host.expand(), c.refusal);
        EXPECT_EQ(host.tree(), c.tree);
    }
}

TEST(ContentScan, AFailureOfTheTargetPassesThroughAndTheNextCallStartsAgain) {
    cabinet_host host(cabinet().file("a", "12345").file("b", "67890").bytes());
    host.trap = support::fail_once_at<fs::Exception>("write b", "disk full", "disk");
    EXPECT_EQ(host.expand(), "disk: disk full");
    EXPECT_EQ(host.tree(), "a=12345\nb=\n");
    host.tree_root->children.clear();
    EXPECT_EQ(host.expand(), "");
    EXPECT_EQ(host.tree(), "a=12345\nb=67890\n");
}

TEST(ContentScan, HandsOnTheNameAndTheTimeOfTheRecord) {
    cabinet_host host(cabinet().file("a/c.txt", "x").bytes());
    ASSERT_EQ(host.expand(), "");
    fs::time leap_day;
    leap_day.set_dos(0x305D, 0x6CB5);
    const auto& made = *host.tree_root->children[0]->children[0];
    EXPECT_EQ(made.name, "c.txt");
    EXPECT_EQ(fs::time(made.times.at("modTime")), leap_day);
    EXPECT_EQ(fs::time(made.times.at("createTime")), leap_day);
}

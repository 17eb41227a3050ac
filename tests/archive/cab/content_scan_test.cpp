#include "model/container_adaptor.h"
#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <random>

using harbor6::Item;
using pattern::AcquiredPtr;
using support::cabinet;
using support::cabinet_host;
using support::mszip;

namespace {

/// The files below `node`, path to bytes.
void collect(const support::memory_node& node, const std::string& prefix,
             std::map<std::string, std::string>& files) {
    for (const auto& child : node.children) {
        if (child->folder)
            collect(*child, prefix + child->name + "/", files);
        else
            files[prefix + child->name] = child->bytes;
    }
}

std::map<std::string, std::string> files_of(const cabinet_host& host) {
    std::map<std::string, std::string> files;
    collect(*host.tree_root, "", files);
    return files;
}

std::string names_in(const harbor6::Container& list) {
    std::string names;
    harbor6::ConstItemIterator items(list);
    for (items.first(); !items.isDone(); items.next())
        names += support::name_of(*AcquiredPtr<const Item>(items.current())) + ' ';
    return names;
}

} // namespace

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
        EXPECT_EQ(names_in(*list), "a r ");
        EXPECT_EQ(host.tree(), "a/\na/b/\na/b/z=4\na/x=1\na/y=3\nr=2\n");
        EXPECT_EQ(host.tree_root->children.front()->commits, present ? 0u : 1u);
    }
}

TEST(ContentScan, FollowsTheClientInAClashAtTheTop) {
    using question = support::recording_client::question;
    const auto bytes = cabinet().file("a/x", "1").file("a/y", "2").file("r", "3").bytes();
    const struct {
        const char* declined;
        bool folder; ///< what bears the name a already
        std::function<void(support::memory_host&, question&)> answer;
        const char* tree;
        const char* refusal;
        int asked;
    } cases[] = {
        {"conflict a", false, [](auto&, auto&) {}, "a=\nr=3\nx=1\ny=2\n", "", 2},
        {"", false, [](auto&, auto&) {}, "a=\n", "un: targetNameConflict failed to resolve conflict", 1},
        {"", true, [](auto&, auto&) {}, "a/\na/x=1\na/y=2\nr=3\n", "", 1},
        {"", false, [](auto&, auto& q) { *q.name = "b"; }, "a=\nb/\nb/x=1\nb/y=2\nr=3\n", "", 1},
        {"", true, [](auto&, auto& q) { *q.target = nullptr; }, "a/\nr=3\n", "", 2},
        {"", false,
         [](auto& host, auto& q) {
             auto& other = host.tree_root->children.empty() ? *host.tree_root : host.tree_root->dir("o");
             *q.target = static_cast<harbor6::Folder*>(host.folder(other).detach());
         },
         "a=\no/\no/a/\no/a/x=1\no/a/y=2\nr=3\n", "", 1},
    };
    for (const auto& c : cases) {
        cabinet_host host(bytes);
        c.folder ? host.tree_root->dir("a") : host.tree_root->file("a", "");
        host.client.declined = {c.declined};
        int asked = 0;
        host.client.on["conflict a"] = [&](auto& put) {
            ++asked;
            c.answer(host, put);
        };
        EXPECT_EQ(host.expand(), c.refusal);
        EXPECT_EQ(host.tree(), c.tree) << &c - cases;
        EXPECT_EQ(asked, c.asked) << &c - cases;
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
    const auto text = [&](std::size_t size) {
        std::string made;
        while (made.size() < size)
            made += std::string(1 + random() % 9, static_cast<char>('a' + random() % 26));
        made.resize(size);
        return made;
    };
    std::vector<std::string> cabinets{support::read_file(HARBOR_TEST_DATA "/lzx15-calls.cab"),
                                      support::read_file(HARBOR_TEST_DATA "/stored-nochecksum.cab")};
    for (const std::uint16_t method : {support::stored, mszip}) {
        cabinet made;
        made.header.reserve = support::reserve_area{.header = "abc", .folder_size = 5, .data_size = 3};
        made.folder(method);
        for (unsigned i = 0; i < 12; ++i) {
            if (i == 7)
                made.folder(mszip);
            made.file(std::string(1, static_cast<char>('0' + i % 3)) + "\\f" + std::to_string(i),
                      text(i % 4 == 3 ? 0 : random() % 50000));
        }
        cabinets.push_back(made.bytes());
    }
    for (const auto& bytes : cabinets) {
        cabinet_host all(bytes);
        ASSERT_EQ(all.expand(), "");
        const auto whole = files_of(all);
        for (unsigned round = 0; round < 12; ++round) {
            cabinet_host host(bytes);
            auto wanted = whole;
            for (const auto& [path, content] : whole) {
                if (random() % 2) {
                    wanted.erase(path);
                    host.client.declined.insert("sourceFile " + path.substr(path.rfind('/') + 1));
                }
            }
            ASSERT_EQ(host.expand(), "");
            ASSERT_TRUE(files_of(host) == wanted) << round;
        }
    }
}

TEST(ContentScan, RefusesInExactWordsAndKeepsWhatWasMade) {
    const auto sound = [] { return cabinet().file("a", "12345").file("b", "67890"); };
    const auto edited = [&](auto edit) {
        auto made = sound();
        edit(made);
        return made.bytes();
    };
    const std::string header = "format::cab::archive_header: ", reader = "format::cab::item_reader: ",
                      index = "harbor6::cab::Archive::addContentTo: invalid folder_index in file_header",
                      crc = "crc format::cab::data_header: CRC mismatch, data is invalid",
                      end = "stream::little_endian_input: unexpected end of stream",
                      segmented = "un::implemented: expansion of segmented CAB archives not supported";
    const auto next = [](cabinet& made) { made.header.next = support::neighbour{"c.cab", "3"}; };
    auto segmented_set = sound();
    next(segmented_set);
    const auto header_size = segmented_set.header_bytes().size();
    const auto sent = [](std::uint16_t folder) {
        return [folder](cabinet& made) { made.files[1].folder_index = folder; };
    };
    const struct {
        std::string bytes, refusal, tree;
    } cases[] = {
        {sound().bytes(), "", "a=12345\nb=67890\n"},
        {"", header + "bad header artifact", ""},
        {edited([](auto& c) { c.header.version = 0x0104; }), header + "unsupported cabinet version", ""},
        {edited([](auto& c) {
             c.header.previous = support::neighbour{"z.cab", "1"};
         }),
         "", "a=12345\nb=67890\n"},
        {edited(next), segmented, ""},
        {support::cut(edited(next), header_size), segmented, ""}, // nothing beyond the header is read
        {support::cut(sound().bytes(), 40), end, ""},
        {edited([](auto& c) { c.header.folder_count = std::uint16_t{0}; }), index, ""},
        {edited(sent(1)), index, ""},
        {edited(sent(0xFFFF)), index, ""},
        {edited([](auto& c) { c.folders[0].compression = support::quantum; }),
         reader + "quantum compression method not supported", "a=\n"},
        {edited([](auto& c) {
             c.folders[0].compression = mszip;
             c.folders[0].encode = [](std::string_view) { return "XX"; };
         }),
         reader + "invalid deflate block artifact", "a=\n"},
        {support::flip(sound().bytes(), sound().bytes().size() - 1), crc, "a=\n"},
        {edited([](auto& c) { c.folders[0].block_count = std::uint16_t{0}; }), "", "a=\n"},
        {edited([](auto& c) { c.files.clear(); }), "", ""},
        {edited([](auto& c) {
             c.files.clear();
             c.block({.payload = "x", .checksum = 1});
         }),
         crc, ""},
        // The file that the failure hits is committed with what it has, the one behind it isn't begun.
        {edited([](auto& c) {
             c.folders[0].block_size = 8;
             c.file("c", "abc").file("d", "");
             c.folders[0].blocks.push_back({.payload = "abc", .checksum = 1});
             c.folders[0].content.resize(8);
         }),
         crc, "a=12345\nb=678\n"},
    };
    for (const auto& c : cases) {
        cabinet_host host(c.bytes);
        EXPECT_EQ(host.expand(), c.refusal) << &c - cases;
        EXPECT_EQ(host.tree(), c.tree) << &c - cases;
        for (const auto& made : host.tree_root->children)
            EXPECT_EQ(made->commits, 1u) << &c - cases;
    }
}

TEST(ContentScan, AFailureOfTheTargetOrOfTheStoragePassesThrough) {
    cabinet_host host(cabinet().file("a", "12345").file("b", "67890").bytes());
    host.trap = [](const std::string& what) {
        if (what == "write b")
            throw fs::Exception("disk full", "disk");
    };
    EXPECT_EQ(host.expand(), "disk: disk full");
    EXPECT_EQ(host.tree(), "a=12345\nb=\n");
    host.trap = nullptr;
    host.tree_root->children.clear();
    EXPECT_EQ(host.expand(), ""); // every call starts again from the first byte
    EXPECT_EQ(host.tree(), "a=12345\nb=67890\n");

    const auto folder = host.root();
    const AcquiredPtr<harbor6::Archive> hollow(new harbor6::cab::Archive(host.format, *folder, 0));
    EXPECT_THROW(hollow->addContentTo(*folder, nullptr), harbor6::counted_ptr_null);
}

TEST(ContentScan, HandsOnTheNameAndTheTimeOfTheRecord) {
    cabinet_host host(cabinet().file("a/c.txt", "x").bytes());
    ASSERT_EQ(host.expand(), "");
    fs::time leap_day;
    leap_day.set_dos(0x305D, 0x6CB5);
    const auto& file = *host.tree_root->children[0]->children[0];
    EXPECT_EQ(file.name, "c.txt");
    EXPECT_EQ(fs::time(file.times.at("modTime")), leap_day);
    EXPECT_EQ(fs::time(file.times.at("createTime")), leap_day);
}

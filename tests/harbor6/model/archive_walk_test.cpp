#include "harbor6/model/content_pass.h"
#include "harbor6/model/scratch_space.h"
#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"
#include "support/temporary_folder.h"

#include <functional>
#include <gtest/gtest.h>
#include <pthread.h>
#include <set>

using harbor6::Archive, harbor6::Item, pattern::AcquiredPtr, support::cabinet, support::cabinet_host;

namespace {

/// Every item below `folder`, as "path=size " with '/' behind folders; positions go into `places`.
std::string walk(const harbor6::Folder& folder, std::set<std::uint64_t>& places,
                 const std::string& prefix = {}) {
    std::string found;
    harbor6::ConstItemIterator items(folder);
    for (items.first(); !items.isDone(); items.next()) {
        const AcquiredPtr<const Item> item(items.current());
        EXPECT_TRUE(places.insert(const_cast<Item&>(*item).position()).second);
        const auto path = prefix + item->string("name");
        if (item->asFolder())
            found += path + "/ " + walk(*item->asFolder(), places, path + "/");
        else
            found += path + "=" + std::to_string(item->integer("uncompressedSize")) + " ";
    }
    return found;
}

/// Up to ten bytes of an item of the archive.
std::string bytes_at(harbor6::Archive& archive, const char* name, std::uint64_t offset) {
    const AcquiredPtr<Item> item(archive.acquireItemFromName(name));
    const auto in = item->asFile()->getMainFork()->randomInput(true, false);
    char bytes[10];
    EXPECT_TRUE(in->seek(offset));
    return {bytes, in->read(bytes, 10)};
}

/// An archive with the content that `fill` makes.
struct filled_archive : harbor6::SuperArchive {
    filled_archive(support::memory_host& host, std::function<void(harbor6::Folder&)> filling)
        : SuperArchive(host.arc, *host.source("x", ""), mode_walk), fill(std::move(filling)) {}
    void addContentTo(harbor6::Folder& target, harbor6::ContainerAdaptor*) const override { fill(target); }

    std::function<void(harbor6::Folder&)> fill;
};

} // namespace

TEST(ArchiveWalk, KeepsEveryValueThatTheFormatsItemHas) {
    support::memory_host host;
    io::mac::file_info info;
    info.type.code = 7;
    const any::time time{{1, 2, 3, 4, 5, 6}};
    const AcquiredPtr first(new filled_archive(host, [&](harbor6::Folder& target) {
        const AcquiredPtr file(target.acquireNewFileFromName("a", false));
        EXPECT_TRUE(file->setBoolean("readOnly", true) && file->setString("comment", "c"));
        EXPECT_TRUE(file->setTime("backupTime", time) && file->setTime("modTime", time));
        EXPECT_TRUE(file->setInteger("unixMode", 1) && file->setInteger("unixMode", 420));
        EXPECT_TRUE(file->setString("unixMode", "rw") && file->setStructure("fInfo", info));
        EXPECT_FALSE(file->setInteger("uncompressedSize", 9));
    }));
    const AcquiredPtr source(first->acquireFirstItem());
    EXPECT_FALSE(const_cast<Item&>(*source).setInteger("unixMode", 1)) << "the walk is built";
    const AcquiredPtr second(new filled_archive(host, [&](harbor6::Folder& target) {
        AcquiredPtr(target.acquireNewFileLike(*source, false));
        AcquiredPtr(target.acquireNewFolderLike(*source, false));
    }));
    harbor6::ConstItemIterator items(*second);
    for (items.first(); !items.isDone(); items.next()) {
        const AcquiredPtr item(items.current());
        SCOPED_TRACE(item->asFolder() ? "folder" : "file");
        io::mac::file_info kept;
        EXPECT_TRUE(item->getStructure("fInfo", kept) && kept.type.code == 7 && !item->has("fXInfo"));
        EXPECT_TRUE(item->boolean("readOnly") && const_cast<Item&>(*item).time("backupTime") == time);
        EXPECT_TRUE(item->integer("unixMode") == 420 && item->string("unixMode") == "rw");
        EXPECT_TRUE(item->string("name") == "a" && item->string("comment") == "c");
        EXPECT_FALSE(!item->has("modTime") || item->has("createTime") || item->has("unheard of"));
    }
}

TEST(ArchiveWalk, GivesEntriesWhileTheArchiveIsOpen) {
    // Two files of one name, a file named as a folder, an empty component, a folder asked for twice.
    cabinet made = cabinet().file("a", "1").file("a", "22").file("d", "333").file("d\\e\\x", "4444");
    const cabinet_host host(made.file("d\\e\\y", "").file("d\\\\z", "55").bytes());
    std::set<std::uint64_t> places;
    EXPECT_EQ(walk(*host.archive, places), "") << "closed";
    host.archive->open(Archive::mode_read);
    EXPECT_EQ(walk(*host.archive, places), "a=1 a=2 d=3 d/ d/e/ d/e/x=4 d/e/y=0 d/z=2 ");
    EXPECT_EQ(host.archive->integer("totalItems"), 8);
    EXPECT_EQ(host.archive->string("name"), "x");
    const AcquiredPtr<const Item> first(host.archive->acquireFirstItem());
    EXPECT_EQ(first->archive(), host.archive.get());
    EXPECT_FALSE(const_cast<Item&>(*first).setString("name", "b"));
    EXPECT_TRUE(first->has("modTime"));
    EXPECT_FALSE(host.archive->hasItemNamed("d")) << "lookups want the search bit";
    host.archive->close();
    host.archive->open(Archive::mode_walk);
    EXPECT_TRUE(host.archive->hasItemNamed("d"));
}

TEST(ArchiveWalk, GivesWhatIsWholeOfADamagedArchiveAndTellsTheFailureAtTheEnd) {
    cabinet made;
    made.file("a", "1")
        .folder(support::stored)
        .file("d\\b", "22")
        .file({.name = "d\\bad", .size = 9, .folder_index = 1});
    made.block({.payload = "3"}).block({.payload = "bad", .checksum = 1});
    const auto bytes = made.folder(support::stored).file("c", "444").bytes();
    const struct {
        bool published;
        const char* found;
        std::string bytes, failure;
    } cases[] = {
        {false, "a=1 d/b=2 ", bytes, "crc format::cab::data_header: CRC mismatch, data is invalid"},
        {true, "a=1 d/b=2 c=3 ", bytes,
         "crc harbor6::cab::Archive::addContentTo: CRC mismatch, data is invalid"},
        {true, "a=1 d/b=2 ", support::cut(bytes, 158),
         "format::cab::data_header: cut short: the input ends at byte 158"},
        {false, "", support::cut(bytes, 40), "stream::little_endian_input: unexpected end of stream"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.found);
        const cabinet_host host(c.bytes);
        host.archive->options.published_rules = c.published;
        host.archive->open(Archive::mode_walk);
        for (int i = 0; i < 2; ++i) {
            std::string found;
            const std::function<void(const harbor6::Folder&, const std::string&)> list =
                [&](const harbor6::Folder& folder, const std::string& path) {
                    harbor6::ConstItemIterator items(folder);
                    for (items.first(); !items.isDone(); items.next()) {
                        const AcquiredPtr<const Item> item(items.current());
                        const auto name = path + item->string("name");
                        if (const auto* const file = item->asFile())
                            found +=
                                name + "=" + std::to_string(file->getMainFork()->input(true)->size()) + " ";
                        else
                            list(*item->asFolder(), name + "/");
                    }
                };
            EXPECT_EQ(support::refusal_of([&] { list(*host.archive, ""); }), c.failure);
            EXPECT_EQ(found, c.found);
        }
    }
}

TEST(ArchiveWalk, AFileIsNotWholeIfItsDataFailsBehindTheLastByte) {
    support::memory_host host;
    for (const auto size : {std::optional<std::uint64_t>(3), std::optional<std::uint64_t>()}) {
        const Archive* self = nullptr;
        const AcquiredPtr archive(new filled_archive(host, [&](harbor6::Folder& target) {
            harbor6::ContentPass pass(*self, target, nullptr);
            pass.add({"a", size, {}}, [](stream::output& out) { out.write("abc"); });
            pass.add({"b", size, {}}, [](stream::output& out) {
                out.write("abc");
                throw format::exception("wrong", "test");
            });
        }));
        self = archive.get();
        harbor6::ConstItemIterator items(*archive);
        items.first();
        EXPECT_EQ(AcquiredPtr(items.current())->string("name"), "a");
        EXPECT_EQ(support::refusal_of([&] { items.next(); }), "test: wrong");
    }
}

TEST(ArchiveWalk, KeepsContentBeyondWhatFitsItsMemory) {
    constexpr std::uint64_t memory = 128u << 10;
    std::string large(300'000, '\0');
    for (std::size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<char>(i * 2654435761u >> 24);
    const cabinet_host host(
        cabinet().file("first", "first").file("large", large).file("last", "last").bytes());
    harbor6::ScratchSpace space("/tmp", memory);
    host.archive->scratch = &space;
    host.archive->open(Archive::mode_walk);
    constexpr std::uint64_t border = memory - 5; // the five bytes of "first" lie in front
    for (const auto offset : {std::uint64_t{0}, border - 7, border, border + 1, large.size() - 3})
        EXPECT_EQ(bytes_at(*host.archive, "large", offset), large.substr(offset, 10)) << offset;
    EXPECT_EQ(bytes_at(*host.archive, "last", 0), "last");
}

TEST(ArchiveWalk, SharesTheMemoryAndTheFolderOfTheArchiveAroundIt) {
    const support::temporary_folder usable;
    const std::string nowhere = usable / "none",
                      failure = "platform::temporary_file: cannot create a temporary file in " + nowhere +
                                ": No such file or directory";
    const struct {
        std::string environment, folder, refusal;
        std::uint64_t pieces; ///< of memory; the outer archive takes one
    } cases[] = {
        {"", nowhere, "", 2},      {"", usable.path, "", 1},      {nowhere, usable.path, "", 1},
        {"", nowhere, failure, 1}, {usable.path, nowhere, "", 1}, {nowhere, nowhere, failure, 1},
    };
    const cabinet_host host(cabinet().file("in", cabinet().file("x", "abc").bytes()).bytes());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.environment + " " + c.folder);
        setenv("TMPDIR", c.environment.c_str(), 1);
        harbor6::ScratchSpace space(c.folder, c.pieces << 16);
        host.archive->scratch = &space;
        for (int i = 0; i < 2; ++i) { // closing returns the memory
            host.archive->open(Archive::mode_read);
            const AcquiredPtr<const Item> first(host.archive->acquireFirstItem());
            const AcquiredPtr inner(
                const_cast<harbor6::cab::Format&>(host.format)
                    ._newArchiveAtItem(const_cast<Item&>(*first).asFile(), Archive::mode_walk));
            EXPECT_EQ(support::refusal_of([&] { EXPECT_EQ(bytes_at(*inner, "x", 1), "bc"); }), c.refusal);
            host.archive->close();
        }
    }
    unsetenv("TMPDIR");
}

TEST(ArchiveWalk, MakesNoMoreLevelsThanTheStackAllows) {
    const auto nested = [](unsigned depth) {
        std::string path;
        for (unsigned i = 0; i < depth; ++i)
            path += "a/";
        return cabinet().file(path + "x", "").bytes();
    };
    const auto walk_of = [](const cabinet_host& host) {
        return support::refusal_of([&] {
            std::int64_t items = 0;
            host.archive->getNumItems(items, false);
        });
    };
    const cabinet_host shallow(nested(16)), deep(nested(512)), deepest(nested(513));
    const std::string too_deep = "harbor6::EntryFolder: the archive's folders lie too deep in one another";
    for (const auto* host : {&shallow, &deep, &deepest})
        host->archive->open(Archive::mode_walk);
    EXPECT_EQ(walk_of(deepest), too_deep);
    EXPECT_EQ(walk_of(deep), "");
    std::string result[2];
    std::function<void()> work = [&] {
        deep.archive->close();
        deep.archive->open(Archive::mode_walk);
        result[0] = walk_of(shallow);
        result[1] = walk_of(deep);
    };
    pthread_attr_t small;
    pthread_t thread;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, 64u << 10);
    const auto run = [](void* given) -> void* {
        return (*static_cast<std::function<void()>*>(given))(), nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &small, run, &work), 0);
    pthread_join(thread, nullptr);
    EXPECT_EQ(result[0] + "," + result[1], "," + too_deep);
}

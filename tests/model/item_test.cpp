#include "model/item.h"

#include "model/infinite_file.h"
#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>
#include <sstream>

using pattern::AcquiredPtr;
using support::memory_host;

namespace {

struct described_format : harbor6::Format {
    explicit described_format(harbor6::HarborShell* host) : Format(host) {
        suffixes = {".s", ".t"};
        name_prefix = "pre-";
        compression_least = 2;
        compression_most = 9;
        compression_default = 5;
    }
    using Format::compression_level;
};

} // namespace

TEST(Item, TheLastReleaseErasesACreatedItemThatWasMarked) {
    struct watched_file : support::memory_file {
        using memory_file::memory_file;
        ~watched_file() override { host.log += "gone;"; }
        void lastRef() const override { host.log += "last;"; }
        void erase() override {
            host.log += "erase;";
            throw std::runtime_error("dropped");
        }
    };
    const struct {
        bool created, marked;
        const char* log;
    } cases[] = {{true, true, "last;erase;gone;"}, {false, true, "last;gone;"}, {true, false, "last;gone;"}};
    for (const auto& c : cases) {
        memory_host host;
        const auto node = std::make_shared<support::memory_node>();
        node->created = c.created;
        AcquiredPtr<harbor6::Item> item(new watched_file(host, node));
        item->setEraseOnRelease(c.marked);
        AcquiredPtr(item.acquire());
        EXPECT_EQ(host.transcript(), "last;");
        item = nullptr;
        EXPECT_EQ("last;" + host.log, c.log);
    }
}

TEST(Item, IsTheSameByRulesInTheirOrder) {
    memory_host host;
    const auto a = host.source("a", "arc:1");
    const auto b = host.source("b", "arc:2");
    const auto again = host.item(a->node);
    EXPECT_TRUE(a->isSameItem(a.get()) && a->isSameItem(again.get()));
    EXPECT_FALSE(a->isSameItem(b.get()));
    a->node->created = false; // without an "fsSpec"
    EXPECT_FALSE(a->isSameItem(again.get()) || b->isSameItem(a.get()));

    const auto one = host.archive(*b);
    const auto two = host.archive(*b);
    EXPECT_TRUE(one->isSameItem(one.get()));
    EXPECT_FALSE(one->isSameItem(two.get()) || one->isSameItem(b.get()) || b->isSameItem(one.get()));
    const auto entry = host.item(b->node, one.get());
    EXPECT_TRUE(entry->isSameItem(host.item(b->node, one.get()).get()));
    EXPECT_FALSE(entry->isSameItem(host.item(b->node, two.get()).get()) || entry->isSameItem(b.get()) ||
                 entry->isSameItem(host.item(a->node, one.get()).get()));
}

TEST(Item, IsRenamedBeforeItIsCreatedOrWhileItIsAdopted) {
    for (const bool created : {false, true})
        for (const bool adopting : {false, true}) {
            memory_host host;
            const auto file = host.source("", "");
            file->node->created = created;
            file->adopting = adopting;
            const bool may = !created || adopting;
            EXPECT_EQ(support::refusal_of([&] { file->retarget("new"); }),
                      may ? "" : "un::implemented: harbor6::Item::retarget");
            EXPECT_EQ(file->node->name, may ? "new" : "");
        }
}

TEST(Item, FoldersComputeWhatFilesDontHave) {
    memory_host host;
    auto& d = host.tree_root->dir("d");
    d.file("a", "123").flags["locked"] = false;
    d.file("b", "45").flags["locked"] = true;
    d.dir("e").file("c", "6");
    const auto folder = host.folder(d);
    const auto file = host.source("f", "1");
    const struct {
        const char* key;
        std::int64_t value; ///< a boolean's too
        bool boolean;
    } keys[] = {{"numItems", 3, false},     {"totalItems", 4, false},    {"uncompressedSize", 1, false},
                {"pluralContent", 1, true}, {"containsLocked", 1, true}, {"containsEncrypted", 0, true}};
    for (const auto& c : keys) {
        EXPECT_TRUE(c.boolean ? folder->hasBoolean(c.key) : folder->hasInteger(c.key)) << c.key;
        EXPECT_EQ(c.boolean ? folder->boolean(c.key) : folder->integer(c.key), c.value) << c.key;
        EXPECT_FALSE(folder->available(c.key) || folder->modifiable(c.key)) << c.key;
        EXPECT_FALSE(file->modifiable(c.key) || file->hasBoolean(c.key)) << c.key;
    }
    EXPECT_TRUE(folder->available("name") && folder->modifiable("name"));
    d.flags["locked"] = true;
    EXPECT_TRUE(folder->available("containsLocked"));
    d.flags["locked"] = false;
    d.children[0]->flags.clear(); // a cannot tell, which ends the walk
    EXPECT_FALSE(folder->boolean("containsLocked") || folder->available("containsLocked"));
    bool locked = true;
    EXPECT_FALSE(host.root()->getContainsLocked(locked, false)); // no flag of its own
    EXPECT_TRUE(file->boolean("fileSystemItem"));
    EXPECT_FALSE(file->hasBoolean("fileSystemItem") || file->modifiable("fileSystemItem"));
}

TEST(File, CommitsAForkThroughItsOwnTransform) {
    memory_host host;
    const auto source = host.source("s", "x");
    const auto target = host.source("t", "old");
    auto& fork = *source->getMainFork();
    target->commitFork(fork);
    EXPECT_EQ(target->node->bytes, "x");
    fork.id = 1; // the target doesn't have it
    target->commitForkTo(fork, *target);
    EXPECT_TRUE(fork.committed);
    EXPECT_EQ(support::refusal_of([&] { target->commitFork(harbor6::Fork()); }),
              "un::implemented: gz::FileItem::commitFile: can't get input stream");
    EXPECT_EQ(support::refusal_of([&] { target->adoptFileContents(*source); }),
              "un::implemented: no default implementation for File::adoptFileContents");
}

TEST(File, IsTestedByACopyIntoNothing) {
    memory_host host;
    const auto file = host.source("a", "text");
    file->testContents();
    EXPECT_EQ(host.transcript(), "");
    host.trap = support::fail_once_at<format::crc_exception>("read a", "x", "y");
    file->testContents();
    EXPECT_EQ(host.transcript(), "itemFailed 1001 a\n");

    const AcquiredPtr sink(new harbor6::InfiniteFile(host.shell, nullptr));
    sink->adopt(file.get());
    sink->cloneAttributes(*file, false);
    EXPECT_EQ(sink->string("name"), "");
    sink->cloneAttributes(*file, true);
    EXPECT_EQ(sink->string("name"), "a");
    EXPECT_EQ(support::refusal_of([&] { sink->copyTo(*file); }),
              "un::implemented: harbor6::File::getMainFork");
}

TEST(Format, AnswersItsKeys) {
    std::istringstream keys(
        "compressionDefault compressionLeast compressionMost fileSizeBits fileType fileCreator "
        "createsIndex isText macAttributes macFormat savesResources executable providesEmptyFile");
    std::string shown;
    for (std::string key; keys >> key;) {
        bool flag = false;
        std::int64_t number = 0;
        const described_format format(nullptr);
        if (format.getInteger(key, number))
            shown += std::to_string(number) + ' ';
        else
            shown += format.getBoolean(key, flag) ? flag ? "yes " : "no " : "none ";
    }
    EXPECT_EQ(shown, "5 2 9 32 0 0 no no no no no yes yes ");
}

TEST(Format, ClampsTheLevelAndStoresTheDefaultForAllOnes) {
    described_format format(nullptr);
    constexpr std::pair<int, int> levels[] = {{0, 2},      {2, 2},      {9, 9},  {10, 9},
                                              {0xFFFE, 9}, {0xFFFF, 5}, {-1, 5}, {0x10003, 3}};
    for (const auto& [set, level] : levels) {
        EXPECT_TRUE(format.setInteger("compressionLevel", set));
        EXPECT_EQ(format.integer("compressionLevel"), level) << set;
    }
    format.compression_level = 0xFFFF;
    EXPECT_EQ(format.integer("compressionLevel"), 5);
    EXPECT_TRUE(format.setInteger("preserveResourceFork", 0x100000005));
    EXPECT_EQ(format.integer("preserveResourceFork"), 5);
}

TEST(Format, NamesNewArchives) {
    memory_host host;
    described_format format(&host.shell);
    const auto root = host.root();
    const auto sample = host.source("a.txt", "");
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveInFolder(*root, nullptr); }),
              "un::implemented: harbor6::Format::_newEmptyArchiveAtItem");
    EXPECT_EQ(support::name_of(*AcquiredPtr(format.newFileInFolder(*root, sample.get()))), "pre-a.txt.s");
    EXPECT_EQ(support::name_of(*AcquiredPtr(format.newFileInFolder(*root, nullptr))), "pre-Archive.s");
    format.active = false;
    const std::string inactive = "un: attempt to create an archive using a deactivated format";
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveAtFile(*sample); }), inactive);
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveAtFolder(*root); }), inactive);
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveInFolder(*root, nullptr); }), inactive);
}

#include "harbor6/model/item.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using pattern::AcquiredPtr, support::memory_host;

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
        EXPECT_EQ("last;" + host.log, c.log) << c.created << c.marked;
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
            EXPECT_EQ(file->node->name, may ? "new" : "") << created << adopting;
            host.unsettable = {"no"};
            EXPECT_EQ(support::refusal_of([&] { file->retarget("no"); }),
                      "un::implemented: harbor6::Item::retarget");
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

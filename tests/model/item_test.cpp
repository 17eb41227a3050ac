#include "model/item.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using pattern::AcquiredPtr;
using support::memory_host;

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
        unsigned references;
        const char* log;
    } cases[] = {
        {true, true, 1, "erase;gone;"},
        {false, true, 1, "gone;"},
        {true, false, 1, "gone;"},
        {true, true, 3, "last;erase;gone;"},
    };
    for (const auto& c : cases) {
        memory_host host;
        const auto node = std::make_shared<support::memory_node>();
        node->created = c.created;
        harbor6::Item* const item = new watched_file(host, node);
        for (unsigned i = 1; i < c.references; ++i)
            item->addReference();
        item->setEraseOnRelease(c.marked);
        for (unsigned i = 0; i < c.references; ++i)
            item->release();
        EXPECT_EQ(host.log, c.log);
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
    const struct {
        bool created, adopting, settable;
        const char* name;
    } cases[] = {
        {false, false, true, "new"}, {true, false, true, ""},  {true, true, true, "new"},
        {true, true, false, ""},     {false, true, false, ""},
    };
    for (const auto& c : cases) {
        memory_host host;
        const auto file = host.source("", "");
        file->node->created = c.created;
        file->adopting = c.adopting;
        if (!c.settable)
            host.unsettable = {"new"};
        EXPECT_EQ(support::refusal_of([&] { file->retarget("new"); }),
                  *c.name ? "" : "un::implemented: harbor6::Item::retarget");
        EXPECT_EQ(file->node->name, c.name);
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
    for (const bool locked : {true, false}) {
        d.flags["locked"] = locked;
        EXPECT_EQ(folder->available("containsLocked"), locked);
    }
    EXPECT_TRUE(file->boolean("fileSystemItem"));
    EXPECT_FALSE(file->hasBoolean("fileSystemItem") || file->modifiable("fileSystemItem"));
    std::int64_t size = 77;
    EXPECT_FALSE(folder->getInteger("nothing", size));
    EXPECT_EQ(size, 0); // cleared first
}

TEST(Item, TakesTheModificationTimeForAMissingCreationTime) {
    memory_host host;
    any::time modified, created;
    modified.words = {1, 2, 3};
    created.words = {4};
    const auto source = host.source("a", "");
    source->setTime("modTime", modified);
    for (const bool second : {false, true}) {
        if (second)
            source->setTime("createTime", created);
        const auto target = host.source("b", "");
        target->cloneAttributes(*source, second);
        EXPECT_EQ(target->node->times.at("modTime"), modified);
        EXPECT_EQ(target->node->times.at("createTime"), second ? created : modified);
        EXPECT_EQ(target->node->name, second ? "a" : "b");
    }
}

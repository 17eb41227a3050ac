#include "model/item.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using harbor6::Item;
using pattern::AcquiredPtr;
using support::memory_host;

namespace {

/// Counts what happens at its release.
struct watched_file : support::memory_file {
    watched_file(memory_host& owner, support::node_ptr shown) : memory_file(owner, std::move(shown)) {}
    ~watched_file() override { host.log += "gone;"; }

    void lastRef() const override { host.log += "last;"; }
    void erase() override {
        host.log += "erase;";
        throw std::runtime_error("dropped");
    }
};

} // namespace

TEST(Item, TheLastReleaseErasesACreatedItemThatWasMarked) {
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
        Item* const item = new watched_file(host, node);
        for (unsigned i = 1; i < c.references; ++i)
            item->addReference();
        item->setEraseOnRelease(c.marked);
        for (unsigned i = 0; i < c.references; ++i)
            item->release();
        EXPECT_EQ(host.log, c.log);
    }
}

TEST(Item, AcquiredPtrHoldsOneReference) {
    memory_host host;
    AcquiredPtr<Item> held(new watched_file(host, std::make_shared<support::memory_node>()));
    {
        const AcquiredPtr<Item> copy = held;
        const AcquiredPtr<Item> acquired(copy.acquire());
        EXPECT_EQ(held->references(), 3u);
    }
    held = AcquiredPtr<Item>(held.detach());
    EXPECT_EQ(held->references(), 1u);
    held = nullptr;
    EXPECT_EQ(host.log, "last;gone;");
    EXPECT_EQ(held.acquire(), nullptr);
    EXPECT_EQ(support::refusal_of([&] { held->commitItem(); }), "un: attempt to derefernce 0");
}

TEST(Item, IsTheSameByRulesInTheirOrder) {
    memory_host host;
    const auto a = host.source("a", "arc:1");
    const auto b = host.source("b", "arc:2");
    const AcquiredPtr<Item> again(host.item(a->node));
    EXPECT_TRUE(a->isSameItem(a.get()) && a->isSameItem(again.get()));
    EXPECT_FALSE(a->isSameItem(b.get()));
    a->node->created = false; // without an "fsSpec"
    EXPECT_FALSE(a->isSameItem(again.get()) || b->isSameItem(a.get()));
    EXPECT_TRUE(a->isSameItem(a.get()));

    const AcquiredPtr<harbor6::Archive> one(host.arc._newArchiveAtItem(b.get(), 0));
    const AcquiredPtr<harbor6::Archive> two(host.arc._newArchiveAtItem(b.get(), 0));
    EXPECT_TRUE(one->isSameItem(one.get()));
    EXPECT_FALSE(one->isSameItem(two.get()) || one->isSameItem(b.get()) || b->isSameItem(one.get()));
    const AcquiredPtr<Item> in_one(host.item(b->node, one.get()));
    const AcquiredPtr<Item> in_one_too(host.item(b->node, one.get()));
    const AcquiredPtr<Item> other_in_one(host.item(a->node, one.get()));
    const AcquiredPtr<Item> in_two(host.item(b->node, two.get()));
    EXPECT_TRUE(in_one->isSameItem(in_one_too.get()));
    EXPECT_FALSE(in_one->isSameItem(in_two.get()) || in_one->isSameItem(b.get()) ||
                 in_one->isSameItem(other_in_one.get()));
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
        EXPECT_EQ(c.boolean ? folder->hasBoolean(c.key) : folder->hasInteger(c.key), true) << c.key;
        EXPECT_EQ(c.boolean ? folder->boolean(c.key) : folder->integer(c.key), c.value) << c.key;
        EXPECT_FALSE(folder->available(c.key)) << c.key;
        EXPECT_FALSE(folder->modifiable(c.key) || file->modifiable(c.key)) << c.key;
        EXPECT_FALSE(file->hasBoolean(c.key)) << c.key;
    }
    EXPECT_TRUE(folder->available("name") && folder->modifiable("name"));
    for (const auto* key : {"fileSystemItem", "nothing"})
        EXPECT_FALSE(file->modifiable(key));
    d.flags["locked"] = true;
    EXPECT_TRUE(folder->available("containsLocked"));
    d.flags["locked"] = false;
    EXPECT_FALSE(folder->available("containsLocked"));
    bool here = false;
    EXPECT_TRUE(file->getBoolean("fileSystemItem", here) && here);
    EXPECT_FALSE(file->hasBoolean("fileSystemItem"));
    std::int64_t size = 77;
    EXPECT_FALSE(folder->getInteger("nothing", size));
    EXPECT_EQ(size, 0); // cleared first
}

TEST(Item, TakesTheModificationTimeForAMissingCreationTime) {
    memory_host host;
    any::time modified, created;
    modified.words = {1, 2, 3};
    created.words = {4};
    for (const bool has_created : {false, true}) {
        const auto source = host.source("a", "");
        source->setTime("modTime", modified);
        if (has_created)
            source->setTime("createTime", created);
        for (const bool with_name : {false, true}) {
            const auto target = host.source("b", "");
            target->cloneAttributes(*source, with_name);
            EXPECT_EQ(target->node->times.at("modTime"), modified);
            EXPECT_EQ(target->node->times.at("createTime"), has_created ? created : modified);
            EXPECT_EQ(target->node->name, with_name ? "a" : "b");
        }
    }
}

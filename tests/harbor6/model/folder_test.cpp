#include "harbor6/model/folder.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using harbor6::Archive, harbor6::Item, pattern::AcquiredPtr, support::memory_host, support::name_of,
    support::refusal_of;
using question = support::recording_client::question;

TEST(Folder, FindsTheFirstItemOfANameByteForByte) {
    memory_host host;
    host.tree_root->file("File", "1");
    auto& first = host.tree_root->file("file", "2");
    host.tree_root->file("file", "3");
    const auto root = host.root();
    const AcquiredPtr<Item> found(root->acquireItemFromName("file"));
    EXPECT_EQ(dynamic_cast<support::memory_file&>(*found).node.get(), &first);
    EXPECT_TRUE(root->hasItemNamed("File") && !root->hasItemNamed("FILE"));
    EXPECT_EQ(name_of(*AcquiredPtr(root->acquireMatchingItem(*found))), "file");

    const auto stored = host.source("x.arc", "arc:x");
    for (const Archive::Mode mode : {0u, 1u, 8u, 7u, 4u}) {
        const auto archive = host.archive(*stored, mode);
        if (mode == 0)
            host.archives["x"]->file("d", "");
        EXPECT_EQ(archive->hasItemNamed("d"), (mode & 4) != 0) << mode;
    }
}

TEST(Folder, MakesItemsUnderTheNameThatTheClientLeaves) {
    const auto nothing = [](memory_host&, question&) {};
    const auto rename = [](memory_host&, question& q) { *q.name = std::string("y"); };
    const auto elsewhere = [](memory_host& host, question& q) {
        *q.target = static_cast<harbor6::Folder*>(host.folder(host.tree_root->dir("o")).detach());
    };
    const auto nowhere = [](memory_host&, question& q) { *q.target = nullptr; };
    const struct {
        bool folder, existing_folder;
        char asked; ///< '-' for a name made unique instead, 'y' or 'n' for the client's answer
        std::function<void(memory_host&, question&)> answer;
        std::string made; ///< "parent/name", or the failure, or ""
    } cases[] = {
        {false, false, '-', nothing, "root/x.2"},
        {false, false, 'n', nothing, ""},
        {false, false, 'y', nothing, "un: targetNameConflict failed to resolve name conflct"},
        {false, false, 'y', rename, "root/y"},
        {false, false, 'y', elsewhere, "o/x"},
        {false, false, 'y', nowhere, ""},
        {true, true, '-', nothing, "root/x.2"},
        {true, true, 'n', nothing, ""},
        {true, true, 'y', nothing, "existing"},
        {true, false, 'y', nothing, "un: targetNameConflict failed to resolve conflict"},
        {true, true, 'y', rename, "root/y"},
        {true, false, 'y', elsewhere, "o/x"},
        {true, true, 'y', nowhere, ""},
    };
    for (const auto& c : cases) {
        memory_host host;
        auto& existing = c.existing_folder ? host.tree_root->dir("x") : host.tree_root->file("x", "");
        host.tree_root->file("x.1", "");
        const auto model = host.source("x", "");
        model->node->times["modTime"].words[0] = 9;
        host.client.on["conflict x"] = [&](question& q) { c.answer(host, q); };
        if (c.asked == 'n')
            host.client.declined = {"conflict x"};
        std::string made;
        const auto refusal = refusal_of([&] {
            const auto root = host.root();
            const AcquiredPtr<Item> item(
                c.folder ? static_cast<Item*>(root->acquireNewFolderLike(*model, c.asked == '-'))
                         : static_cast<Item*>(root->acquireNewFileLike(*model, c.asked == '-')));
            if (!item)
                return;
            const auto& node = *dynamic_cast<support::node_item&>(*item).node;
            made = &node == &existing ? "existing" : node.parent.lock()->name + "/" + node.name;
            EXPECT_EQ(node.times.count("modTime"), &node == &existing ? 0u : 1u);
        });
        EXPECT_EQ(made + refusal, c.made) << &c - cases;
        const std::string put =
            c.folder && c.existing_folder ? "conflict x -> root folders" : "conflict x -> root";
        EXPECT_EQ(host.transcript(), c.asked == '-' ? "" : put + (c.asked == 'y' ? "\n" : ": no\n"));
    }
    memory_host host;
    host.unsettable = {"x"};
    EXPECT_EQ(refusal_of([&] { host.root()->acquireNewFolderFromName("x", false); }),
              "un::implemented: harbor6::Folder::acquireNewFolderFromName: this format doesn't support "
              "setting a folder's name");
    EXPECT_EQ(name_of(*AcquiredPtr(host.root()->acquireNewFileFromName("x", false))), "");
}

TEST(Folder, WalksPathsThroughItsFactories) {
    memory_host host;
    std::string steps;
    host.trap = [&](const std::string& what) { steps += what + ";"; };
    const auto root = host.root();
    EXPECT_TRUE(!root->acquireItemFromPath("b") && steps.empty());
    AcquiredPtr(root->acquireNewFileFromPath("a/f", false));
    EXPECT_EQ(steps, "new folder in root;name a;new file in a;name f;");
    AcquiredPtr(root->acquireNewFolderFromPath("a/b/c", false));
    EXPECT_EQ(host.tree(), "a/\na/b/\n");
    AcquiredPtr(root->acquireNewFileFromPath("d/f", true));
    AcquiredPtr(root->acquireNewFolderFromPath("d/e", true));
    EXPECT_EQ(root->acquireItemFromPath("x/f"), nullptr);
    EXPECT_EQ(host.tree(), "a/\na/b/\nd/\nd/e/\nd/f=\n");
    EXPECT_EQ(name_of(*AcquiredPtr(root->acquireItemFromPath("d/f"))), "f");
}

TEST(Folder, AdoptsItemsByACopyAndAnErase) {
    const struct {
        const char* item;
        char existing; ///< 'd' for a folder of that name, 'f' for a file
        const char *declined, *renamed, *tree;
        const char* left; ///< names that stay where they were
        const char* asked;
    } cases[] = {
        {"f", 0, "", "", "f=1\n", "d", ""},
        {"f", 'f', "", "g", "f=old\ng=1\n", "d", "conflict f -> here"},
        {"f", 'f', "conflict f", "", "f=old\n", "fd", "conflict f -> here: no"},
        {"f", 0, "sourceFile f", "", "", "fd", ""},
        {"d", 0, "", "", "d/\nd/i=2\n", "f", ""},
        {"d", 'd', "", "", "d/\nd/i=2\n", "fd", "conflict d -> here folders"}, // merged: i moves
        {"d", 'f', "", "e", "d=old\ne/\ne/i=2\n", "f", "conflict d -> here"},
    };
    for (const auto& c : cases) {
        memory_host host;
        host.sources->file("f", "1");
        host.sources->dir("d").file("i", "2");
        if (c.existing)
            c.existing == 'd' ? host.tree_root->dir(c.item) : host.tree_root->file(c.item, "old");
        host.client.declined = {c.declined};
        host.client.on[std::string("conflict ") + c.item] = [&](question& q) {
            if (*c.renamed)
                *q.name = c.renamed;
        };
        const AcquiredPtr<Item> item(host.folder(*host.sources)->acquireItemFromName(c.item));
        const AcquiredPtr<Item> result(host.root()->acquireAdoptedItem(*item));
        EXPECT_EQ(host.tree(), c.tree) << c.asked;
        std::string left;
        for (const auto& child : host.sources->children)
            left += child->name;
        EXPECT_EQ(left, c.left) << c.asked;
        EXPECT_FALSE(item->adopting);
        EXPECT_EQ(static_cast<bool>(result), !*c.declined);
        EXPECT_TRUE(host.transcript().starts_with(c.asked)) << c.asked;
    }
}

TEST(Folder, KnowsWhatItHoldsAndWhatHoldsIt) {
    memory_host host;
    auto& a = host.tree_root->dir("a");
    auto& b = a.dir("b");
    const AcquiredPtr<Item> item(host.root()->acquireItemFromName("a"));
    EXPECT_EQ(AcquiredPtr(host.root()->acquireAdoptedItem(*item)).get(), item.get()); // it is here already
    for (auto* into : {&a, &b})
        EXPECT_EQ(refusal_of([&] { host.folder(*into)->adoptItem(*item); }),
                  "un: harbor6::Folder::acquireAdoptedItem: cannot move a folder into itself");

    const auto file = host.source("f", "1");
    host.source("g", "2");
    host.trap = support::fail_once_at<std::runtime_error>("write f", "x");
    EXPECT_THROW(host.root()->adoptItem(*file), std::runtime_error);
    EXPECT_FALSE(file->adopting);
    host.folder(b)->adoptContent(*host.folder(*host.sources));
    EXPECT_EQ(host.tree(), "a/\na/b/\na/b/f=1\na/b/g=2\n");
    EXPECT_TRUE(host.sources->children.empty());
    host.folder(b)->eraseContent();
    EXPECT_EQ(host.tree(), "a/\na/b/\n");
}

TEST(SuperArchive, ClosesTheGapsWithPlainAnswers) {
    memory_host host;
    const auto stored = host.source("x.ARC", "arc:x");
    const AcquiredPtr<Archive> archive(new harbor6::SuperArchive(host.arc, *stored, 0));
    EXPECT_EQ(name_of(*archive), "x"); // without the suffix
    archive->open(1);
    EXPECT_THROW(archive->open(1), Archive::ModeError);
    EXPECT_EQ(refusal_of([&] { archive->RemoveItem(nullptr); }),
              "un::implemented: void harbor6::Folder::RemoveItem(harbor6::Item* removedItem)");
    EXPECT_EQ(refusal_of([&] { archive->addItem(*host.source("f", "1"), false); }),
              "un::implemented: harbor6::Folder::_newFile()");
    EXPECT_EQ(host.transcript(), "sourceFile f -> x\n"); // the client is asked first
}

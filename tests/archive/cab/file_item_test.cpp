#include "archive/cab/file_item.h"

#include "archive/cab/folder_item.h"
#include "support/cabinet_host.h"

#include <gtest/gtest.h>

using harbor6::cab::FileItem;
using harbor6::cab::FolderItem;
using pattern::AcquiredPtr;

TEST(CabinetItems, AnswerFromTheRecordAndRefuseChanges) {
    support::cabinet_host host("");
    auto* const archive = static_cast<harbor6::cab::Archive*>(host.archive.get());
    const auto record = std::make_shared<format::cab::file_header>();
    record->name = "a/b/c.txt";
    record->time.set_dos(0x305D, 0x6CB5);
    const AcquiredPtr<FileItem> file(new FileItem(archive, record));
    const AcquiredPtr<FileItem> twin(new FileItem(archive, record));
    const AcquiredPtr<FolderItem> folder(new FolderItem(archive, "b"));
    any::time time;
    EXPECT_EQ(file->string("name"), "c.txt");
    EXPECT_EQ(folder->string("name"), "b");
    EXPECT_TRUE(file->hasTime("modTime") && file->getTime("modTime", time));
    EXPECT_EQ(fs::time(time), record->time);
    EXPECT_FALSE(file->hasTime("createTime") || folder->hasTime("modTime"));
    EXPECT_FALSE(file->getTime("createTime", time) || folder->getTime("modTime", time));
    for (const auto* key : {"name", "modTime", "createTime", "nothing"}) {
        EXPECT_FALSE(file->modifiable(key) || folder->modifiable(key)) << key;
        EXPECT_FALSE(file->setString(key, "x") || folder->setString(key, "x")) << key;
    }
    EXPECT_FALSE(file->hasInteger("uncompressedSize"));
    EXPECT_TRUE(folder->hasBoolean("pluralContent"));

    EXPECT_EQ(file->archive(), archive);
    EXPECT_EQ(&file->format(), &host.format);
    EXPECT_EQ(AcquiredPtr<harbor6::Folder>(folder->acquireParent()).get(), archive);
    EXPECT_TRUE(file->isSameItem(twin.get())); // positions are 0 alike
    EXPECT_FALSE(file->getMainFork()->input(true));
    EXPECT_EQ(support::refusal_of([&] { file->erase(); }),
              "un: harbor6::Containable::erase(): not an erasable Item");
    EXPECT_EQ(support::refusal_of([&] { file->retarget("x"); }), "un::implemented: harbor6::Item::retarget");
    EXPECT_EQ(support::refusal_of([&] { folder->acquireNewFileFromName("x", false); }),
              "un::implemented: harbor6::Folder::_newFile()");
    EXPECT_EQ(support::refusal_of([&] { folder->acquireItemFromPath("x/y"); }),
              "un::implemented: harbor6::Folder::_newFolder()");
    EXPECT_EQ(folder->acquireItemFromPath("x"), nullptr);
    EXPECT_FALSE(file->exists());
}

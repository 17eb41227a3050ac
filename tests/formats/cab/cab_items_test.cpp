#include "formats/cab/cab_items.h"

#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"

#include <gtest/gtest.h>

TEST(CabItems, HaveAFilesNameAndTimeOrAFoldersName) {
    const support::cabinet_host host(support::cabinet().bytes());
    auto* const archive = static_cast<harbor6::cab::Archive*>(host.archive.get());
    const auto record = std::make_shared<format::cab::file_header>();
    record->name = "a/b/c.txt";
    record->time.set_dos(0x305D, 0x6CB5); // in February
    const pattern::AcquiredPtr file(new harbor6::cab::FileItem(archive, record));
    const pattern::AcquiredPtr folder(new harbor6::cab::FolderItem(archive, "b"));
    EXPECT_TRUE(file->hasString("name") && file->string("name") == "c.txt" && !file->hasString("comment"));
    EXPECT_TRUE(file->hasTime("modTime") && fs::time(file->time("modTime")).month == 2);
    EXPECT_TRUE(folder->hasString("name") && folder->string("name") == "b" && !folder->hasString("comment"));
    EXPECT_TRUE(folder->hasInteger("numItems") && !file->hasInteger("numItems"));
}

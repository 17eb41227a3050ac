#include "formats/cab/cab_items.h"

#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"

#include <gtest/gtest.h>

TEST(CabItems, HaveTheirRecordsNameTimeAndDetails) {
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
    EXPECT_EQ(pattern::AcquiredPtr<harbor6::Folder>(folder->acquireParent()).get(), archive);
    for (const auto* key : {"name", "modTime", "createTime"})
        EXPECT_FALSE(file->modifiable(key) || folder->modifiable(key) || file->setString(key, "x")) << key;
    EXPECT_TRUE(!file->hasTime("createTime") && !file->exists() && !file->getMainFork()->input(true));
    EXPECT_TRUE(folder->hasInteger("numItems") && !file->hasInteger("numItems"));

    archive->options.item_details = harbor6::Archive::Details::all;
    record->size = 0xFFFFFFFF;
    record->folder_offset = 77;
    record->folder_index = 7;
    const std::pair<const char*, std::uint16_t> flags[] = {
        {"readOnly", 1}, {"hidden", 2}, {"system", 4}, {"archive", 0x20}, {"executable", 0x40}};
    for (const auto& [key, bit] : flags) {
        SCOPED_TRACE(key);
        record->attributes.from_dos_flags(bit);
        const pattern::AcquiredPtr detailed(new harbor6::cab::FileItem(archive, record, 0x1503));
        EXPECT_TRUE(!file->has(key) && detailed->hasBoolean(key) && !detailed->modifiable(key));
        for (const auto& [other, ignored] : flags)
            EXPECT_EQ(detailed->boolean(other), std::string_view(other) == key);
        io::win32::attributes all;
        EXPECT_TRUE(!file->has("win32Attributes") && detailed->hasStructure("win32Attributes"));
        EXPECT_TRUE(detailed->getStructure("win32Attributes", all) && all.system == (bit == 4));
        EXPECT_TRUE(!file->has("uncompressedSize") && detailed->hasInteger("uncompressedSize"));
        EXPECT_EQ(detailed->integer("uncompressedSize"), 0xFFFFFFFF);
        EXPECT_EQ(detailed->integer("folderOffset") - detailed->integer("folderIndex"), 70);
        EXPECT_EQ(detailed->string("pathName") + detailed->string("compMethod"), "a/b/c.txtLZX:21");
        EXPECT_TRUE(detailed->string("name") == "c.txt" && fs::time(detailed->time("modTime")).month == 2);
    }
}

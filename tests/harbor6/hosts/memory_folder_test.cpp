#include "harbor6/hosts/archive_reader.h"
#include "harbor6/hosts/memory_folder.h"
#include "harbor6/stream/memory_input.h"
#include "support/cabinet_writer.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

namespace {

struct noting : host::journal {
    void done(const std::string&, std::uint64_t) override {}
    void refused(const std::string& path, const std::string& reason) override {
        text += path + ": " + reason + "\n";
    }
    void unfinished(const std::string&, std::uint64_t, const std::string&) override {}
    void missing(const std::string&) override {}

    std::string text;
};

struct MemoryFolder : testing::Test {
    MemoryFolder() {
        for (const auto& folder : host::Registry::standard_folders())
            formats.load(folder);
    }
    /// Expands into `memory`, and returns what ended that.
    std::string expand(const std::string& bytes) {
        reader.emplace(formats, std::make_unique<stream::memory_input>(bytes));
        memory.emplace(reader->plain_format(), most);
        const pattern::AcquiredPtr<host::MemoryFolder> top(new host::MemoryFolder(*memory));
        return support::refusal_of(
            [&] { reader->expand(*top, reports, host::TargetClient::Existing::fail, {}); });
    }

    harbor6::ClientInterface client;
    host::Registry formats{client};
    std::uint64_t most = ~std::uint64_t{0};
    std::optional<host::ArchiveReader> reader;
    std::optional<host::memory_target> memory;
    noting reports;
};

TEST_F(MemoryFolder, TakesWhatAnArchiveContains) {
    support::cabinet made;
    made.folder(support::mszip).file("d\\e\\a", std::string(70000, 'a')).file("b", "1").file("b", "2");
    EXPECT_EQ(expand(made.file("b\\c", "3").file("d", "4").file("..", "5").bytes()), "");
    EXPECT_EQ(reports.text, "b: another file of the archive has that name\n"
                            "d: a folder of that name exists\n..: its name is reserved\n");
    ASSERT_EQ(memory->files.size(), 2u);
    EXPECT_EQ(memory->files["d/e/a"].bytes->size(), 70000u);
    EXPECT_EQ(*memory->files["b"].bytes, "1");
    EXPECT_TRUE(memory->files["b"].complete);
    EXPECT_EQ(memory->files["b"].modified->year, 2004u);
    EXPECT_EQ(memory->folders, (std::set<std::string>{"d", "d/e"}));

    const pattern::AcquiredPtr<host::MemoryFolder> top(new host::MemoryFolder(*memory));
    const pattern::AcquiredPtr<harbor6::Item> folder(top->acquireItemFromName("d"));
    EXPECT_EQ(folder->integer(harbor6::key::totalItems), 2);
    folder->adopting = true;
    folder->retarget("new");
    EXPECT_EQ(memory->files.count("new/e/a"), 1u);
    folder->erase();
    EXPECT_EQ(memory->size, 1u);
}

TEST_F(MemoryFolder, KeepsPartsApartFromWholeFilesAndEndsAtItsBound) {
    const auto whole = support::cabinet().file("a", "12").file("b", std::string(40000, 'b')).bytes();
    EXPECT_NE(expand(support::cut(whole, 36000)), "");
    EXPECT_TRUE(memory->files["a"].complete);
    EXPECT_FALSE(memory->files["b"].complete);
    most = 100;
    EXPECT_EQ(expand(whole), "host::MemoryFolder: the files need more memory than is allowed");
}

} // namespace

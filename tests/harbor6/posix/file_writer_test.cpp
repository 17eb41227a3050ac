#include "harbor6/posix/file_writer.h"
#include "harbor6/posix/system_error.h"

#include "support/faults.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

namespace faults = support::faults;
using support::read_file;
using support::tree;

enum class file_system { complete, names_all_files, plain };

/// Not every file system has files without a name, or a rename that replaces nothing.
class FileWriter : public testing::TestWithParam<file_system> {
protected:
    FileWriter() {
        target.unnamed_files = GetParam() == file_system::complete;
        faults::can_keep_others = GetParam() != file_system::plain;
    }
    ~FileWriter() override { faults::can_keep_others = true; }

    support::temporary_folder place;
    host::directory_tree target{(place / "a/out").string(), true};
};

TEST_P(FileWriter, ASignalRemovesEveryPartialFile) {
    std::filesystem::create_directories(place / "a/out");
    support::write_file(place / "a/out/old", "old");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        EXPECT_EXIT(
            {
                host::remove_temporary_files_on_signals();
                host::file_writer done(target, "", "done" + std::to_string(signal), false);
                done.write("all");
                done.finish();
                host::file_writer aside(target, "d", "aside", false);
                aside.write("ha");
                aside.release(false);
                host::file_writer half(target, "", "old", true);
                half.write("half");
                host::file_writer other(target, "d", "new", false);
                other.write("half");
                kill(getpid(), signal);
                pause();
            },
            testing::KilledBySignal(signal), "");
    EXPECT_EQ(tree(place / "a/out"), "d/ done1 done15 done2 done3 old ");
    EXPECT_EQ(read_file(place / "a/out/old"), "old");
}

TEST_P(FileWriter, NamesAFileWhenItIsWhole) {
    const auto write = [&](const std::string& name, bool replacing, const std::string& bytes) {
        auto writer = std::make_unique<host::file_writer>(target, "", name, replacing);
        writer->write(bytes);
        return writer;
    };
    auto x = write("x", false, "whole");
    EXPECT_EQ(tree(place / "a/out").find('x'), std::string::npos);
    x->release(true);
    EXPECT_EQ(read_file(place / "a/out/x"), "whole");
    x->finish();
    x = write("y", true, "part");
    x->release(false);
    x = nullptr;
    target.keeps_unfinished = true;
    for (const auto* const bytes : {"part", "other part"})
        write("y", true, bytes);
    EXPECT_EQ(read_file(place / "a/out/y.partial") + read_file(place / "a/out/y.partial2"), "partother part");
    target.keeps_unfinished = false;
    write("gone", false, "?")->discard();

    // Names that something else took meanwhile.
    auto refused = write("z", false, "mine");
    const auto replacing = write("w", true, "mine");
    support::write_file(place / "a/out/z", "theirs");
    support::write_file(place / "a/out/w", "theirs");
    EXPECT_THROW(refused->finish(), host::path_error);
    refused = nullptr;
    replacing->finish();
    EXPECT_EQ(read_file(place / "a/out/z") + read_file(place / "a/out/w"), "theirsmine");
    EXPECT_EQ(tree(place / "a/out"), "w x y.partial y.partial2 z ");
}

TEST_P(FileWriter, SyncsFilesAndFoldersOnRequest) {
    for (const bool syncs : {false, true}) {
        host::directory_tree tree((place / (syncs ? "b/out" : "a/out")).string(), true);
        tree.unnamed_files = GetParam() == file_system::complete;
        tree.syncs = syncs;
        faults::synced_files = faults::synced_folders = 0;
        host::file_writer(tree, "d/e", "x", false).finish();
        tree.sync_folders();
        EXPECT_EQ(faults::synced_files, syncs ? 1u : 0u);
        EXPECT_EQ(faults::synced_folders, syncs ? 5u : 0u)
            << "d/e, d, the top, its new parent and the one above";
    }
}

TEST_P(FileWriter, RenamesWithoutReplacing) {
    for (const auto& [folder, name] :
         {std::pair("", "file"), std::pair("folder", "new"), std::pair("", "other")})
        host::file_writer(target, folder, name, false).finish();
    target.rename("folder", "renamed", false);
    target.rename("file", "renamed/file", false);
    EXPECT_THROW(target.rename("other", "renamed/file", false), host::path_error);
    EXPECT_THROW(target.rename("renamed", "other", false), host::path_error);
    EXPECT_EQ(tree(place / "a/out"), "other renamed/ renamed/file renamed/new ");
}

INSTANTIATE_TEST_SUITE_P(Systems, FileWriter,
                         testing::Values(file_system::complete, file_system::names_all_files,
                                         file_system::plain));

} // namespace

#include "host/platform/file_writer.h"
#include "host/platform/system_error.h"

#include "support/temporary_folder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

unsigned synced_files = 0;
unsigned synced_folders = 0;

} // namespace

extern "C" int fsync(int descriptor) {
    struct stat status = {};
    fstat(descriptor, &status);
    ++(S_ISDIR(status.st_mode) ? synced_folders : synced_files);
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace {

using support::read_file;
using support::tree;

/// With and without files that have no name: not every file system has them.
class FileWriter : public testing::TestWithParam<bool> {
protected:
    FileWriter() { target.unnamed_files = GetParam(); }

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
    EXPECT_EQ(read_file(place / "a/out/y"), "part") << "there was no y to replace";
    write("y", true, "partial");
    EXPECT_EQ(read_file(place / "a/out/y"), "part");
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
    EXPECT_EQ(tree(place / "a/out"), "w x y z ");
}

TEST_P(FileWriter, SyncsFilesAndFoldersOnRequest) {
    for (const bool syncs : {false, true}) {
        host::directory_tree tree((place / (syncs ? "b/out" : "a/out")).string(), true);
        tree.unnamed_files = GetParam();
        tree.syncs = syncs;
        synced_files = synced_folders = 0;
        host::file_writer(tree, "d/e", "x", false).finish();
        tree.sync_folders();
        EXPECT_EQ(synced_files, syncs ? 1u : 0u);
        EXPECT_EQ(synced_folders, syncs ? 5u : 0u) << "d/e, d, the top, its new parent and the one above";
    }
}

INSTANTIATE_TEST_SUITE_P(UnnamedOrNot, FileWriter, testing::Bool());

} // namespace

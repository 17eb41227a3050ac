#include "harbor6/hosts/disk_file.h"
#include "harbor6/hosts/disk_folder.h"
#include "harbor6/posix/directory_tree.h"
#include "harbor6/posix/system_error.h"
#include "harbor6/stream/multi_output.h"
#include "support/faults.h"
#include "support/memory_streams.h"
#include "support/temporary_folder.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace faults = support::faults;
using pattern::AcquiredPtr;
using support::read_file;
using support::tree;
using support::write_file;

/// Keeps each report as a line.
struct recorder : host::journal {
    void done(const std::string& path, std::uint64_t size) override {
        lines += path + " " + std::to_string(size) + "\n";
    }
    void refused(const std::string& path, const std::string& reason) override {
        lines += path + ": " + reason + "\n";
    }
    void unfinished(const std::string& path, std::uint64_t size, const std::string&) override {
        lines += path + " only " + std::to_string(size) + "\n";
    }
    void missing(const std::string& path) override { lines += path + " missing\n"; }
    std::string take() { return std::exchange(lines, {}); }

    std::string lines;
};

struct DiskFolder : testing::Test {
    AcquiredPtr<harbor6::Folder> folder(const std::string& path) {
        AcquiredPtr<harbor6::Folder> found(new host::DiskFolder(*used));
        for (std::size_t start = 0, end; start < path.size(); start = end + 1) {
            end = std::min(path.find('/', start), path.size());
            found = found->acquireCreatedFolder(path.substr(start, end - start));
        }
        return found;
    }
    AcquiredPtr<harbor6::File> file(const std::string& path, const std::string& name) {
        const auto parent = folder(path);
        AcquiredPtr<harbor6::File> made(parent->acquireNewFileFromName(name, false));
        fs::time when;
        when.set_dos(0x305D, 0x6CB5);
        made->setTime(harbor6::key::modTime, when);
        return made;
    }
    void write(harbor6::File& to, const std::string& bytes) {
        to.getMainFork()->output(true)->write(bytes);
        to.commitItem();
    }
    void put(const std::string& path, const std::string& name, const std::string& bytes) {
        write(*file(path, name), bytes);
    }

    support::temporary_folder place;
    host::directory_tree target{(place / "out").string(), true};
    recorder log;
    harbor6::Format format{nullptr};
    host::expansion_state expansion{target, format, log};
    host::expansion_state* used = &expansion;
};

TEST_F(DiskFolder, ContainsFilesOnceTheyAreCommitted) {
    {
        const auto top = folder("");
        EXPECT_FALSE(top->hasItemNamed("x"));
        const auto waiting = file("", "x");
        EXPECT_TRUE(top->hasItemNamed("x")) << "a reserved name counts as existing";
        EXPECT_EQ(tree(place.path), "") << "the target is created with the first file in it";
    }
    EXPECT_EQ(log.take(), "x missing\n");
    put("a/b", "x", std::string(100000, 'x') + "tail");
    put("a//b", "y", "");
    EXPECT_EQ(tree(place.path), "out/ out/a/ out/a/b/ out/a/b/x out/a/b/y ");
    EXPECT_EQ(read_file(place / "out/a/b/x"), std::string(100000, 'x') + "tail");
    EXPECT_EQ(log.take(), "a/b/x 100004\na/b/y 0\n");
    const auto b = folder("a/b");
    EXPECT_TRUE(b->hasItemNamed("x") && !b->hasItemNamed("X") && !b->hasItemNamed(".."));
    struct stat status = {};
    ASSERT_EQ(stat((place / "out/a/b/x").c_str(), &status), 0);
    char time[32] = {};
    std::strftime(time, sizeof time, "%F %T", std::localtime(&status.st_mtime));
    EXPECT_STREQ(time, "2004-02-29 13:37:42");
}

TEST_F(DiskFolder, NeverFollowsALink) {
    const auto outside = place / "outside";
    std::filesystem::create_directories(outside / "sub");
    std::filesystem::create_directories(place / "out/real");
    std::filesystem::create_directory_symlink(outside, place / "out/link");
    std::filesystem::create_symlink(outside / "new", place / "out/dangling");
    put("link", "x", "1");
    put("link/sub", "x", "2");
    put("", "dangling", "3");
    EXPECT_EQ(log.take(), "link/x: cannot use folder link: it is a symbolic link\n"
                          "link/sub/x: cannot use folder link: it is a symbolic link\n"
                          "dangling: cannot create dangling: File exists\n");

    // Links that appear between the lookup and the writing.
    const auto promised = file("real", "late");
    const auto deeper = file("real/deep", "x");
    const auto below = file("real/way/down", "x");
    std::filesystem::create_symlink(outside / "new", place / "out/real/late");
    write(*promised, "4");
    for (int i = 0; i < 20; ++i) // the folder is closed meanwhile
        folder(std::to_string(i));
    std::filesystem::remove(place / "out/real/deep");
    std::filesystem::create_directory_symlink(outside, place / "out/real/deep");
    write(*deeper, "5");
    std::filesystem::rename(place / "out/real/way", place / "out/moved");
    std::filesystem::create_directory_symlink("../moved", place / "out/real/way"); // leads nowhere outside
    write(*below, "6");
    EXPECT_EQ(log.take(), "real/late: cannot create real/late: File exists\n"
                          "real/deep/x: cannot use folder real/deep: it is a symbolic link\n"
                          "real/way/down/x: cannot use folder real/way: it is a symbolic link\n");
    EXPECT_EQ(tree(outside), "sub/ ");
}

TEST_F(DiskFolder, RejectsNamesThatLeadElsewhere) {
    for (const std::string& name : {std::string(), std::string("."), std::string(".."), std::string("a/b"),
                                    std::string("/x"), std::string("a\0b", 3), std::string(256, 'a')})
        EXPECT_NE(host::name_fault(name), "") << name;
    EXPECT_EQ(host::name_fault("..."), "");
    for (const std::string name : {".", "..", "a/b"})
        put("", name, "x");
    const auto top = folder("");
    for (const std::string name : {"..", "../up", "/up"}) {
        const AcquiredPtr<harbor6::Folder> bad(top->acquireCreatedFolder(name));
        EXPECT_NE(dynamic_cast<host::DiskFolder&>(*bad).prepareFor("x"), "") << name;
    }
    EXPECT_EQ(tree(place.path), "");
}

TEST_F(DiskFolder, AnObstacleConcernsOneFileOrFolder) {
    for (const std::string name : {"locked", "closed"}) {
        std::filesystem::create_directories(place / "out" / name);
        ASSERT_EQ(chmod((place / "out" / name).c_str(), name == "locked" ? 0555 : 0), 0);
    }
    const bool root = geteuid() == 0;
    if (root) {
        ASSERT_EQ(chmod(place.path.c_str(), 0755) + chown((place / "out").c_str(), 65534, 65534), 0);
        ASSERT_EQ(seteuid(65534), 0);
    }
    put("locked", "x", "1");
    put("closed", "x", "2");
    support::faults::arm(support::faults::call::mkdir, 1, ENOSPC, true);
    put("full", "x", "3");
    support::faults::disarm();
    put("fine", "x", "4");
    if (root) {
        ASSERT_EQ(seteuid(0), 0);
    }
    EXPECT_EQ(log.take(), "locked/x: cannot create locked/x: Permission denied\n"
                          "closed/x: cannot use folder closed: Permission denied\n"
                          "full/x: cannot create folder full: No space left on device\n"
                          "fine/x 1\n");
    std::filesystem::permissions(place / "out/closed", std::filesystem::perms::owner_all);
}

TEST_F(DiskFolder, AFileOfTheArchiveIsNotReplacedUnderAnotherSpelling) {
    put("", "a", "first");
    std::filesystem::create_hard_link(place / "out/a", place / "out/A"); // as if they were one name
    expansion.replace_next("", "A");
    put("", "A", "second");
    EXPECT_EQ(log.take(), "a 5\nA: another file of the archive has that name\n");
    EXPECT_EQ(read_file(place / "out/a") + tree(place / "out"), "firstA a ");
}

TEST_F(DiskFolder, KeepsFewDescriptorsOpen) {
    std::vector<AcquiredPtr<harbor6::File>> waiting;
    std::string deep = "d";
    for (int i = 0; i < 300; ++i) {
        waiting.push_back(file(std::to_string(i), "x"));
        if (i < 100)
            deep += "/d";
    }
    waiting.push_back(file(deep, "x"));
    const auto open_now = [] {
        std::ptrdiff_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
            count += !entry.path().empty();
        return count;
    };
    EXPECT_LT(open_now(), 40);
    for (const auto& each : waiting)
        each->getMainFork()->output(true)->write("x");
    EXPECT_LT(open_now(), 40) << "a file needs no descriptor once its stream is destroyed";
    for (const auto& each : waiting)
        each->commitItem();
    EXPECT_EQ(read_file(place.path / "out" / deep / "x"), "x");

    // As many as the host allows, and fewer if the process may not have that many.
    rlimit before = {};
    getrlimit(RLIMIT_NOFILE, &before);
    target.most_open_folders = 1000;
    for (const rlim_t limit : {before.rlim_cur, static_cast<rlim_t>(open_now() + 60)}) {
        const rlimit lower = {limit, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &lower);
        for (int i = 0; i < 150; ++i)
            put(std::to_string(i) + "/sub", std::to_string(limit), "x");
        EXPECT_EQ(open_now() > 150, limit == before.rlim_cur);
        target.most_open_folders = 16;
        put("few", std::to_string(limit), "x");
        target.most_open_folders = 1000;
    }
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(log.take().find(':'), std::string::npos);
}

TEST_F(DiskFolder, WritesLargeFilesOnAnotherThreadWithTheSameResult) {
    constexpr std::size_t sizes[] = {5000, 131072, 3'000'000, 0, 400'000, 1'500'000, 131071, 1'000'000};
    constexpr std::size_t limit = 1'234'567;
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto write_all = [&](const std::string& where, std::size_t piece) {
        const rlimit lower = {limit, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &lower);
        std::string all;
        for (const auto size : sizes) {
            const auto item = file(where, std::to_string(size));
            std::string bytes(size, '\0');
            for (std::size_t i = 0; i < size; ++i)
                bytes[i] = static_cast<char>(i * i >> 7 ^ size);
            {
                const auto out = item->getMainFork()->output(true);
                dynamic_cast<stream::segment_listener&>(*out).segment_begins(size);
                for (std::size_t i = 0; i < size; i += piece)
                    out->write(bytes.data() + i, static_cast<unsigned>(std::min(piece, size - i)));
                if (size == 400'000) {
                    EXPECT_EQ(out->tell(), size);
                }
                if (size == 1'000'000)
                    item->erase(); // while its bytes are on their way
            }
            item->commitItem();
            if (size != 1'000'000)
                all += read_file(place / "out" / where / std::to_string(size));
        }
        setrlimit(RLIMIT_FSIZE, &before);
        for (std::size_t at; (at = log.lines.find(where + "/")) != std::string::npos;)
            log.lines.erase(at, where.size());
        return all + log.take();
    };
    const auto expected = write_all("all", 32768);
    EXPECT_NE(expected.find("3000000 only 1234567"), expected.npos);
    for (const unsigned piece : {32768U, 1000U, 700'000U}) {
        expansion.write_on_a_thread();
        EXPECT_TRUE(write_all("p" + std::to_string(piece), piece) == expected) << piece;
    }
}

TEST_F(DiskFolder, CopiesRenamesAndErasesFiles) {
    put("", "a", "bytes");
    const AcquiredPtr<harbor6::Item> from(folder("")->acquireItemFromName("a"));
    const auto to = file("d", "b");
    from->asFile()->copyTo(*to);
    EXPECT_EQ(log.take(), "a 5\nd/b 5\n");
    EXPECT_EQ(read_file(place / "out/d/b"), "bytes");
    // A move within the target is a rename.
    const auto top = folder("");
    const AcquiredPtr<harbor6::Item> moved(top->acquireAdoptedItem(*to));
    moved->setString("name", "c");
    const AcquiredPtr<harbor6::Item> emptied(top->acquireItemFromName("d"));
    emptied->erase();
    EXPECT_EQ(tree(place / "out"), "a c ");
    moved->erase();
    EXPECT_EQ(tree(place / "out"), "a ");
}

TEST_F(DiskFolder, ASignalGivesARenamedFolderItsNameBack) {
    put("a", "one", "1");
    const auto interrupted = [&](bool moved) {
        host::remove_temporary_files_on_signals();
        const auto wrapper = folder("a");
        wrapper->setString("name", "hidden");
        if (moved)
            folder("")->adoptItem(*AcquiredPtr<harbor6::Item>(wrapper->acquireItemFromName("one")));
        kill(getpid(), SIGTERM);
        pause();
    };
    EXPECT_EXIT(interrupted(false), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EQ(tree(place / "out"), "a/ a/one ");
    EXPECT_EXIT(interrupted(true), testing::KilledBySignal(SIGTERM), "");
    EXPECT_EQ(tree(place / "out"), "one ");
}

enum class file_system { complete, names_all_files, plain };

/// Not every file system has files without a name, or a rename that replaces nothing.
struct DiskFile : DiskFolder, testing::WithParamInterface<file_system> {
    DiskFile() {
        target.unnamed_files = GetParam() == file_system::complete;
        faults::can_keep_others = GetParam() != file_system::plain;
    }
    ~DiskFile() override { faults::can_keep_others = true; }

    /// A file with bytes that aren't said to be all.
    AcquiredPtr<harbor6::File> part(const std::string& path, const std::string& name, bool replacing) {
        if (replacing)
            expansion.replace_next(path, name);
        auto made = file(path, name);
        made->getMainFork()->output(true)->write("part");
        return made;
    }
};

TEST_P(DiskFile, ASignalRemovesEveryPartialFile) {
    std::filesystem::create_directories(place / "out");
    write_file(place / "out/old", "old");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        EXPECT_EXIT(
            {
                host::remove_temporary_files_on_signals();
                put("", "done" + std::to_string(signal), "all");
                const auto aside = part("d", "aside", false);
                expansion.replace_next("", "old");
                const auto half = file("", "old")->getMainFork()->output(true);
                const auto other = file("d", "new")->getMainFork()->output(true);
                other->write(std::string(100'000, 'x'));
                kill(getpid(), signal);
                pause();
            },
            testing::KilledBySignal(signal), "");
    EXPECT_EQ(tree(place / "out"), "d/ done1 done15 done2 done3 old ");
    EXPECT_EQ(read_file(place / "out/old"), "old");
}

TEST_P(DiskFile, IsNamedWhenItIsWhole) {
    const auto x = file("", "x");
    auto out = x->getMainFork()->output(true);
    dynamic_cast<stream::segment_listener&>(*out).segment_begins(5);
    out->write("whole");
    EXPECT_EQ(tree(place / "out").find('x'), std::string::npos);
    out.reset();
    EXPECT_EQ(read_file(place / "out/x"), "whole");
    x->commitItem();
    part("", "y", true);
    target.keeps_unfinished = true;
    part("", "y", false);
    part("", "y", true);
    EXPECT_EQ(read_file(place / "out/y.partial") + read_file(place / "out/y.partial2"), "partpart");
    target.keeps_unfinished = false;
    part("", "gone", false)->erase();

    // Names that something else took meanwhile.
    const auto refused = part("", "z", false);
    const auto replacing = part("", "w", true);
    write_file(place / "out/z", "theirs");
    write_file(place / "out/w", "theirs");
    log.take();
    refused->commitItem();
    replacing->commitItem();
    EXPECT_EQ(log.take(), "z: cannot create z: File exists\nw 4\n");
    EXPECT_EQ(read_file(place / "out/z") + read_file(place / "out/w"), "theirspart");
    EXPECT_EQ(tree(place / "out"), "w x y.partial y.partial2 z ");
}

TEST_P(DiskFile, IsSyncedWithItsFoldersOnRequest) {
    for (const bool syncs : {false, true}) {
        host::directory_tree own((place / (syncs ? "b/out" : "a/out")).string(), true);
        own.unnamed_files = GetParam() == file_system::complete;
        own.syncs = syncs;
        host::expansion_state state(own, format, log);
        used = &state;
        faults::synced_files = faults::synced_folders = 0;
        put("d/e", "x", "");
        own.sync_folders();
        EXPECT_EQ(faults::synced_files, syncs ? 1u : 0u);
        EXPECT_EQ(faults::synced_folders, syncs ? 5u : 0u)
            << "d/e, d, the top, its new parent and the one above";
    }
}

TEST_P(DiskFile, IsRenamedWithoutReplacing) {
    put("", "file", "");
    put("folder", "new", "");
    put("", "other", "");
    target.rename("folder", "renamed", false);
    target.rename("file", "renamed/file", false);
    EXPECT_THROW(target.rename("other", "renamed/file", false), host::path_error);
    EXPECT_THROW(target.rename("renamed", "other", false), host::path_error);
    EXPECT_EQ(tree(place / "out"), "other renamed/ renamed/file renamed/new ");
}

TEST_P(DiskFile, IsWrittenAndReadInAnyOrder) {
    const auto made = file("d", "f");
    {
        const auto out = made->getMainFork()->randomOutput(true);
        out->write("0123456789", 10);
        EXPECT_TRUE(!out->seek(11) && out->seek(3)) << "no holes";
        out->write("abcd");
        EXPECT_EQ(out->tell() * 100 + out->size(), 710u);
        out->resize(9);
    }
    made->commitItem();
    EXPECT_EQ(read_file(place / "out/d/f"), "012abcd78");

    const auto in = made->getMainFork()->randomInput(true, false);
    char bytes[16];
    EXPECT_EQ(in->skip(7), 7u);
    EXPECT_EQ(in->read(bytes, 16), 2u);
    in->unread("??", 2);
    EXPECT_EQ(in->skip(9), 2u);
    EXPECT_TRUE(!in->seek(10) && in->seek(1));
    EXPECT_EQ(std::string(bytes, in->read(bytes, 3)), "12a");
}

INSTANTIATE_TEST_SUITE_P(Systems, DiskFile,
                         testing::Values(file_system::complete, file_system::names_all_files,
                                         file_system::plain));

/// Turns out damaged behind its last byte.
struct damaged_fork : harbor6::Fork {
    struct damaged_input : support::seekable_input {
        using seekable_input::seekable_input;
        std::uint64_t _copy_to(stream::output& to) override {
            seekable_input::_copy_to(to);
            throw format::crc_exception("damaged", "damaged_input");
        }
    };
    harbor6::data::CountedInput input(bool) const override {
        return harbor6::data::CountedInput(new damaged_input("new"));
    }
};

TEST_F(DiskFolder, DamagedDataIsNeverACompleteFile) {
    put("", "old", "old");
    expansion.replace_next("", "old");
    const auto target_file = file("", "old");
    EXPECT_THROW(target_file->commitFork(damaged_fork()), format::crc_exception);
    target_file->commitItem();
    EXPECT_EQ(log.take(), "old 3\nold only 3\n");
    EXPECT_EQ(read_file(place / "out/old"), "old");
}

} // namespace

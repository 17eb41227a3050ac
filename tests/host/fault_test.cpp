#include "formats/cab/cab_format.h"
#include "harbor6/hosts/disk_folder.h"
#include "harbor6/hosts/source_file.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/classifier.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"
#include "support/cabinet_writer.h"
#include "support/faults.h"
#include "support/refusal.h"
#include "support/temporary_folder.h"
#include "support/zlib_streams.h"

#include <cstring>
#include <fcntl.h>
#include <gtest/gtest.h>

namespace {

using pattern::AcquiredPtr;
using support::faults::call;

/// What becomes of each file.
struct recorder : host::journal {
    void done(const std::string& path, std::uint64_t) override { ++complete[path]; }
    void refused(const std::string& path, const std::string& reason) override {
        failures[path] += reason + "\n";
    }
    void unfinished(const std::string& path, std::uint64_t, const std::string& reason) override {
        refused(path, reason);
    }
    void missing(const std::string& path) override { refused(path, "missing"); }

    std::map<std::string, unsigned> complete;
    std::map<std::string, std::string> failures;
};

struct replacing_client : harbor6::ClientInterface {
    bool targetNameConflict(std::string& name, harbor6::Item&, bool, const harbor6::Attributes&,
                            AcquiredPtr<harbor6::Folder>* target) override {
        dynamic_cast<host::DiskFolder&>(**target).replaceNext(name);
        return true;
    }
};

void expand(const std::filesystem::path& place, host::journal& log) {
    harbor6::Classifier classifier;
    replacing_client client;
    harbor6::HarborShell shell(classifier, client);
    harbor6::Format plain(&shell);
    harbor6::cab::Format format(&shell);
    host::directory_tree target((place / "out").string(), true);
    target.syncs = true;
    host::expansion_state state(target, plain, log);
    host::file_descriptor opened(open((place / "x.cab").c_str(), O_RDONLY | O_CLOEXEC));
    const AcquiredPtr<harbor6::File> source(
        new host::SourceFile(plain, "x.cab", std::make_unique<host::file_input>(std::move(opened), "x.cab")));
    const AcquiredPtr<harbor6::Archive> archive(format._newArchiveAtItem(source.get(), 0));
    archive->addContentTo(*AcquiredPtr<harbor6::Folder>(new host::DiskFolder(state)), nullptr);
    target.sync_folders();
}

std::ptrdiff_t open_descriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::distance(begin(all), end(all));
}

// Each call fails in turn, up to the first pass in which no call is left to fail. Whatever fails, a file is
// complete, or as before, or reported; the reason is the true one; and nothing else is left.
TEST(Faults, AreNamedAndLeaveNoHalfFile) {
    const std::map<std::string, std::string> content = {{"a", "first"},
                                                        {"d/b", zlib_streams::words(90000)},
                                                        {"d/e/c", zlib_streams::noise(70000)},
                                                        {"empty", ""},
                                                        {"old", "the new content"}};
    const support::temporary_folder place;
    support::cabinet made;
    for (const auto& [path, bytes] : content)
        (path == "d/b" ? made.folder(support::mszip) : made).file(path, bytes);
    support::write_file(place / "x.cab", made.bytes());
    const struct {
        call which;
        int error;
        std::string reason = std::strerror(error);
    } cases[] = {{call::allocate, 0, "std::bad_alloc"},
                 {call::open, EMFILE},
                 {call::create, ENOSPC},
                 {call::mkdir, ENOSPC},
                 {call::read, EIO},
                 {call::write, ENOSPC},
                 {call::link, EIO},
                 {call::rename, EIO},
                 {call::time, EIO},
                 {call::sync, EIO},
                 {call::close, EIO}};
    for (const auto& c : cases) {
        bool struck = true;
        const unsigned modes = c.which == call::allocate ? 1 : 2; // without memory nothing can be told
        for (unsigned i = 0; struck || i % modes != 0; ++i) {
            const unsigned nth = 1 + i / modes;
            SCOPED_TRACE("call " + std::to_string(static_cast<int>(c.which)) + " number " +
                         std::to_string(nth));
            std::filesystem::remove_all(place / "out");
            std::filesystem::create_directory(place / "out");
            support::write_file(place / "out/old", "as before");
            const auto descriptors = open_descriptors();
            recorder log;
            support::faults::arm(c.which, nth, c.error, i % modes != 0);
            auto failure = support::refusal_of([&] { expand(place.path, log); });
            struck = support::faults::disarm();
            EXPECT_EQ(open_descriptors(), descriptors);
            for (const auto& [path, reason] : log.failures)
                failure += reason;
            bool all_complete = true;
            for (const auto& [path, bytes] : content) {
                const auto found = support::read_file(place / ("out/" + path));
                const bool complete = log.complete[path] == 1;
                all_complete &= complete;
                const bool untouched = found == (path == "old" ? "as before" : "(none)");
                const bool told = bytes.starts_with(found) && log.failures.count(path);
                EXPECT_TRUE(found == bytes || (!complete && (untouched || told))) << path << ": " << failure;
                EXPECT_LE(log.complete[path], 1u) << path;
            }
            if (!all_complete && failure.find("cannot create an event") == std::string::npos) {
                EXPECT_NE(failure.find(c.reason), std::string::npos) << failure;
            }
            EXPECT_TRUE(struck || all_complete) << failure;
            EXPECT_EQ(support::tree(place / "out").find(".harbor"), std::string::npos);
        }
    }
}

} // namespace

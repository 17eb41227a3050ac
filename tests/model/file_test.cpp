#include "model/file.h"

#include "model/infinite_file.h"
#include "model/output_transformer.h"
#include "support/memory_host.h"
#include "support/memory_streams.h"
#include "support/refusal.h"

#include <deque>
#include <gtest/gtest.h>

using harbor6::Archive;
using pattern::AcquiredPtr;
using support::memory_host;
using support::refusal_of;

namespace {

struct test_fork : harbor6::Fork {
    harbor6::data::CountedInput input(bool /*expanding*/) const override {
        return harbor6::data::CountedInput(readable ? new support::memory_input("x") : nullptr);
    }

    bool readable = true;
};

/// Shows several forks, and fails at each as it is told.
struct forked_file : support::memory_file {
    using memory_file::memory_file;

    struct walk : pattern::Iterator<const harbor6::Fork*> {
        explicit walk(const std::deque<test_fork>& walked) : forks(walked) {}
        void first() override { at = 0; }
        void next() override { ++at; }
        bool isDone() const override { return at == forks.size(); }
        const harbor6::Fork* current() override { return &forks[at]; }
        const std::deque<test_fork>& forks;
        std::size_t at = 0;
    };
    std::unique_ptr<pattern::Iterator<const harbor6::Fork*>> createIterator() const override {
        return std::make_unique<walk>(forks);
    }
    void commitFork(const harbor6::Fork& source) override {
        host.log += "fork " + std::to_string(source.id) + "\n";
        failures[source.id]();
    }

    std::deque<test_fork> forks;
    std::vector<std::function<void()>> failures;
};

} // namespace

TEST(File, AdoptsEveryForkAndTellsOfTheFirstDamage) {
    const auto crc = [] { throw format::crc_exception("x", "y"); };
    const auto digest = [] { throw basic::digest_exception("x"); };
    const auto decoder = [] { throw basic::algorithm_exception("x"); };
    const auto other = [] { throw format::exception("x", "y"); };
    const struct {
        std::vector<std::function<void()>> failures;
        const char* log;
        unsigned commits;
        std::vector<bool> committed;
    } cases[] = {
        {{}, "", 0, {}},
        {{[] {}, [] {}}, "fork 0\nfork 1\n", 0, {true, true}},
        {{crc, digest}, "fork 0\nitemFailed 1001 s\nfork 1\n", 1, {false, false}},
        {{[] {}, decoder, crc}, "fork 0\nfork 1\nitemFailed 1002 s\nfork 2\n", 1, {true, false, false}},
        {{digest, other, [] {}}, "fork 0\nitemFailed 1001 s\nfork 1\n", 0, {false, false, false}},
    };
    for (const auto& c : cases) {
        memory_host host;
        const AcquiredPtr source(new forked_file(host, host.source("s", "")->node));
        const AcquiredPtr target(new forked_file(host, host.source("t", "")->node));
        target->failures = c.failures;
        for (unsigned i = 0; i < c.failures.size(); ++i)
            source->forks.emplace_back().id = i;
        target->setEraseOnRelease(true);
        const auto refusal = refusal_of([&] { target->adoptForks(*source); });
        EXPECT_EQ(refusal, c.committed.size() == 3 && c.commits == 0 ? "y: x" : "");
        EXPECT_EQ(host.transcript(), c.log);
        EXPECT_EQ(target->node->commits, c.commits);
        EXPECT_EQ(target->node->flags.count("hidden"), c.commits);
        for (unsigned i = 0; i < c.committed.size(); ++i)
            EXPECT_EQ(source->forks[i].committed, c.committed[i]) << i;
    }
}

TEST(File, CommitsAForkThroughItsOwnTransform) {
    memory_host host;
    const auto target = host.source("t", "old");
    test_fork fork;
    target->commitFork(fork);
    EXPECT_EQ(target->node->bytes, "x");
    fork.id = 1; // the target doesn't have it
    target->commitForkTo(fork, *target);
    EXPECT_TRUE(fork.committed);
    EXPECT_EQ(target->getFork(1), nullptr);
    fork.readable = false;
    EXPECT_EQ(refusal_of([&] { target->commitFork(fork); }),
              "un::implemented: gz::FileItem::commitFile: can't get input stream");
}

TEST(File, AdoptsAsAnArchiveOrForkByFork) {
    memory_host host;
    const auto source = host.source("s", "hello");
    const auto target = host.source("t.arc", "");
    target->containerFormat = &host.arc;
    target->adopt(source.get());
    EXPECT_EQ(target->node->bytes, "arc:s(hello)");
    target->adopt(static_cast<harbor6::Item*>(host.root().get()));
    EXPECT_EQ(target->node->bytes, "arc:root()");
    target->node->flags["symLink"] = true;
    target->adopt(source.get());
    EXPECT_EQ(target->node->bytes, "hello");
    EXPECT_EQ(target->node->commits, 3u);
    EXPECT_EQ(refusal_of([&] { target->adoptFileContents(*source); }),
              "un::implemented: no default implementation for File::adoptFileContents");
}

TEST(File, FollowsSingleFileWrappersToTheInnermostArchive) {
    const std::string asked = "  classify file out.arc\n";
    const std::string opened = asked + "  open out 7\n  classify file in.arc\n";
    const auto raise_un = [] { throw un::exception("x", "y"); };
    const struct {
        bool follow, single;
        const char* fails;
        int nth;
        std::function<void()> raise;
        std::string log;
        const char* found; ///< name of the archive; "" if it is raised
    } cases[] = {
        {false, true, "", 0, {}, asked, "out"},
        {true, false, "", 0, {}, asked, "out"},
        {true, true, "", 0, {}, opened + "  open in 7\n  classify file plain\n  close in\n", "in"},
        {true, true, "open archive", 1, raise_un, asked + "  open out 7\n", "out"},
        {true, true, "classify", 2, raise_un, opened + "  close out\n", "out"},
        {true, true, "classify", 2, [] { throw std::bad_alloc(); }, opened + "  close out\n", ""},
    };
    for (const auto& c : cases) {
        memory_host host;
        host.arc.is_file = c.single;
        const auto file = host.source("out.arc", "arc:1");
        const auto wrapper = host.archive(*file); // makes the folder of its content
        host.archives["1"]->file("in.arc", "arc:2");
        (host.archives["2"] = std::make_shared<support::memory_node>())->file("plain", "text");
        const AcquiredPtr inside(new support::memory_file(host, file->node, wrapper.get()));
        EXPECT_TRUE(file->isOutermost());
        EXPECT_EQ(inside->isOutermost(), c.single);
        host.trap = [&, left = c.nth](const std::string& what) mutable {
            if (what == c.fails && --left == 0)
                c.raise();
        };
        std::string found;
        refusal_of([&] { found = support::name_of(*AcquiredPtr(file->acquireArchive(c.follow, 0, 0))); });
        EXPECT_EQ(found, c.found);
        EXPECT_EQ(host.transcript(), c.log);
    }
}

TEST(File, IsTestedByACopyIntoNothing) {
    memory_host host;
    const auto file = host.source("a", "text");
    file->testContents();
    EXPECT_EQ(host.transcript(), "");
    host.trap = support::fail_once_at<format::crc_exception>("read a", "x", "y");
    file->testContents();
    EXPECT_EQ(host.transcript(), "itemFailed 1001 a\n");

    const AcquiredPtr sink(new harbor6::InfiniteFile(host.shell, nullptr));
    EXPECT_EQ(sink->getFork(7)->id, 7u);
    EXPECT_EQ(sink->getMainFork()->id, 0u);
    sink->adopt(file.get());
    EXPECT_TRUE(sink->modifiable("x") && sink->setString("name", "x"));
    sink->cloneAttributes(*file, false);
    EXPECT_EQ(sink->string("name"), "");
    sink->cloneAttributes(*file, true);
    EXPECT_EQ(sink->string("name"), "a");
    EXPECT_EQ(refusal_of([&] { sink->copyTo(*file); }), "un::implemented: harbor6::File::getMainFork");
}

TEST(File, WritesThroughATransformsPort) {
    memory_host host;
    struct passing_file : support::memory_file {
        using File::output;
        using memory_file::memory_file;
        harbor6::Transform* compressionTransform() override { return new harbor6::Transform; }
    };
    auto* const kept = new support::memory_output;
    harbor6::data::CountedOutput target(kept);
    const AcquiredPtr file(new passing_file(host, host.source("a", "")->node));
    const auto port = file->output(target);
    port->write("text", 4);
    port->finish();
    port->close();
    EXPECT_EQ(kept->bytes, "text");
}

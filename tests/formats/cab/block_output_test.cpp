#include "formats/cab/cab_archive.h"
#include "support/memory_host.h"

#include <gtest/gtest.h>

namespace {

/// A fork in memory that must be opened for expanded bytes.
struct expanding_fork : support::memory_fork {
    using memory_fork::memory_fork;
    harbor6::data::CountedOutput output(bool expanding) override {
        EXPECT_TRUE(expanding);
        return memory_fork::output(expanding);
    }
};

struct target_file : support::memory_file {
    explicit target_file(support::memory_stage& stage)
        : memory_file(stage, std::make_shared<support::memory_node>(false, "target")) {}
    harbor6::Fork* getMainFork() override { return &expanding; }
    expanding_fork expanding{this};
};

} // namespace

TEST(BlockOutput, CutsOneStreamIntoFilesAndReleasesEachWhenItIsComplete) {
    support::memory_stage host;
    const pattern::AcquiredPtr a(new target_file(host)), empty(new target_file(host)),
        b(new target_file(host));
    const auto commits = [&] { return std::tuple(a->node->commits, empty->node->commits, b->node->commits); };
    harbor6::cab::block_output output;
    for (const auto& [size, target] :
         {std::pair(3u, a.acquire()), {2u, nullptr}, {0u, empty.acquire()}, {5u, b.acquire()}})
        output.entries.push_back({size, pattern::AcquiredPtr<harbor6::File>(target)});
    output.finish();
    EXPECT_EQ(commits(), std::tuple(0u, 0u, 0u)) << "before start()";
    output.start();
    output.write("abc--def", 8);
    EXPECT_EQ(commits(), std::tuple(1u, 1u, 0u));
    EXPECT_FALSE(output.entries[0].target || output.entries[2].target);
    output.endStream();
    EXPECT_TRUE(!output.attached() && b->node->commits == 0) << "closed, and committed by finish() alone";
    output.finish();
    output.finish();
    EXPECT_EQ(commits(), std::tuple(1u, 1u, 1u));
    EXPECT_EQ(output.attached(), nullptr);
    output.write("behind", 6);
    EXPECT_EQ(output.tell(), 14u);
    EXPECT_EQ(a->node->bytes + "," + b->node->bytes, "abc,def");
}

#include "archive/cab/block_output.h"

#include "support/memory_host.h"

#include <gtest/gtest.h>

using harbor6::cab::block_output;
using support::memory_host;

TEST(BlockOutput, CutsItsStreamAndCommitsEachFileOnce) {
    const struct {
        std::vector<std::uint64_t> sizes;
        std::set<std::size_t> unwanted;
        std::vector<std::string> writes;
        std::string tree;
    } cases[] = {
        {{3, 5}, {}, {"12345678"}, "0=123\n1=45678\n"},
        {{3, 5}, {}, {"12", "3456", "", "78"}, "0=123\n1=45678\n"},
        {{3, 5}, {0}, {"12345678"}, "1=45678\n"},
        {{3, 5}, {0, 1}, {"12345678"}, ""},
        {{0, 4}, {}, {"1234"}, "0=\n1=1234\n"},
        {{0, 4}, {}, {}, "0=\n"}, // the second is never reached
        {{0, 0, 0}, {}, {}, "0=\n1=\n2=\n"},
        {{2, 0, 0, 2, 0}, {}, {"1234"}, "0=12\n1=\n2=\n3=34\n4=\n"},
        {{2, 0, 1}, {}, {"12"}, "0=12\n1=\n2=\n"}, // reached, and left without a byte
        {{3}, {}, {"12"}, "0=12\n"},
        {{3, 3}, {}, {"12"}, "0=12\n"},
        {{2}, {}, {"12", "345"}, "0=12\n"}, // bytes behind the last entry are dropped
        {{}, {}, {"12"}, ""},
    };
    for (const auto& c : cases) {
        memory_host host;
        std::uint64_t total = 0;
        {
            block_output output;
            for (std::size_t i = 0; i < c.sizes.size(); ++i) {
                auto& entry = output.entries.emplace_back();
                entry.size = c.sizes[i];
                if (!c.unwanted.count(i))
                    entry.target = host.root()->acquireNewFileFromName(std::to_string(i), false);
            }
            output.start();
            for (const auto& text : c.writes) {
                output.write(text.data(), static_cast<unsigned>(text.size()));
                total += text.size();
            }
            EXPECT_EQ(output.tell(), total);
            EXPECT_EQ(output.size(), ~std::uint64_t{0});
            if (c.sizes.size() % 2) { // by hand, twice, or by the destructor
                output.finish();
                output.finish();
            }
        }
        EXPECT_EQ(host.tree(), c.tree);
        for (const auto& file : host.tree_root->children)
            EXPECT_EQ(file->commits, 1u) << file->name;
    }
}

TEST(BlockOutput, WithoutAStartCommitsNothing) {
    memory_host host;
    {
        block_output output;
        output.entries.push_back(
            {0, pattern::AcquiredPtr<harbor6::File>(host.root()->acquireNewFileFromName("a", false))});
        output.finish();
        EXPECT_EQ(output.attached(), nullptr);
    }
    EXPECT_EQ(host.tree(), "");
}

TEST(BlockOutput, AFailedCommitLeavesWriteAndIsDroppedByTheDestructor) {
    memory_host host;
    host.trap = [](const std::string& what) {
        if (what == "commit a")
            throw un::exception("no", "");
    };
    block_output output;
    for (const auto* name : {"a", "b"})
        output.entries.push_back(
            {1, pattern::AcquiredPtr<harbor6::File>(host.root()->acquireNewFileFromName(name, false))});
    output.start();
    EXPECT_THROW(output.write("12", 2), un::exception);
    EXPECT_EQ(host.tree(), "a=1\n");
}

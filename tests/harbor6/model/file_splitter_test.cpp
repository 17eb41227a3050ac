#include "harbor6/model/file_splitter.h"

#include "support/memory_host.h"

#include <gtest/gtest.h>

TEST(FileSplitter, CommitsEachFileOnceHoweverOftenItIsFinished) {
    for (const unsigned count : {0u, 2u, 3u, 8u, 9u}) { // bytes that come for files of three and five
        support::memory_host host;
        {
            harbor6::FileSplitter splitter;
            for (const std::uint64_t size : {3, 5}) {
                const auto node = host.tree_root->child(false, std::to_string(size));
                splitter.entries.push_back(
                    {size, pattern::AcquiredPtr<harbor6::File>(new support::memory_file(host, node))});
            }
            splitter.start();
            splitter.write("abcdefghi", count);
            splitter.endStream();
            EXPECT_EQ(splitter.attached(), nullptr);
            unsigned commits = 0;
            for (const auto& file : host.tree_root->children)
                commits += file->commits;
            EXPECT_EQ(commits, (count >= 3 ? 1u : 0u) + (count >= 8 ? 1u : 0u))
                << "the current file isn't committed";
            splitter.finish();
            splitter.finish();
        }
        for (const auto& file : host.tree_root->children)
            EXPECT_EQ(file->commits, 1u) << file->name << " after " << count;
    }
}

#include "harbor6/model/range_splitter.h"
#include "harbor6/model/scratch_space.h"
#include "support/memory_host.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>
#include <random>

using harbor6::RangeSplitter, pattern::AcquiredPtr;

TEST(RangeSplitter, GivesEachFileItsRangeOfTheStream) {
    std::mt19937 random(20040229);
    const support::temporary_folder folder;
    harbor6::ScratchSpace space(folder.path.string(), 1u << 17);
    for (unsigned round = 0; round < 60; ++round) {
        support::memory_host host;
        // In every third round the files overlap each other many times more than can be open at once.
        const unsigned files = round % 3 == 0 ? 90 : 12, length = round % 3 == 0 ? 90000 : 900;
        std::string bytes(length, '\0');
        for (auto& byte : bytes)
            byte = static_cast<char>(random());
        struct expected {
            AcquiredPtr<support::memory_file> file;
            std::string bytes;
            bool begun;
        };
        std::vector<expected> all;
        RangeSplitter splitter(space);
        const bool in_turn = round % 4 < 2;
        if (in_turn)
            splitter.at_once = 1;
        std::size_t most_open = 0, now_open = 0;
        host.trap = [&](const std::string& step) {
            now_open += step.starts_with("open ");
            now_open -= step.starts_with("commit ");
            most_open = std::max(most_open, now_open);
        };
        const auto add = [&](std::size_t from) {
            const auto offset = from + random() % (length + 50 - from);
            const auto size = random() % 4 == 0 && !in_turn ? 0 : 1 + random() % (length * 2 / 3);
            const auto file = host.source(std::to_string(all.size()), "");
            const bool begun = size == 0 || offset <= length;
            all.push_back(
                {file, begun && size > 0 && offset < length ? bytes.substr(offset, size) : "", begun});
            splitter.add({offset, size, AcquiredPtr<harbor6::File>(file.acquire())});
        };
        for (unsigned i = 0; i < files; ++i)
            add(0);
        splitter.start();
        for (std::size_t at = 0; at < length;) {
            const auto piece =
                static_cast<unsigned>(std::min<std::size_t>(1 + random() % 40000, length - at));
            splitter.write(bytes.data() + at, piece);
            at += piece;
            if (at < length && round % 2)
                add(at);
        }
        EXPECT_EQ(splitter.tell(), length);
        splitter.finish();
        EXPECT_FALSE(splitter.wantsMore());
        EXPECT_LE(most_open, in_turn ? 1 : RangeSplitter::usual_at_once + 1);
        for (const auto& [file, wanted, begun] : all) {
            ASSERT_TRUE(file->node->bytes == wanted) << round << ' ' << file->node->name;
            ASSERT_EQ(file->node->commits, begun ? 1u : 0u) << round << ' ' << file->node->name;
        }
    }
}

TEST(RangeSplitter, WantsMoreUntilTheLastByteAndTellsWhatMayBeWrong) {
    support::memory_host host;
    RangeSplitter splitter(harbor6::ScratchSpace::standard());
    std::string damaged;
    splitter.damaged = [&](harbor6::File& file) { damaged += support::name_of(file); };
    const auto add = [&](const char* name, std::uint64_t offset, std::uint64_t size) {
        splitter.add({offset, size, AcquiredPtr<harbor6::File>(host.source(name, "").acquire())});
    };
    add("c", 4, 2);
    add("a", 0, 2);
    add("b", 1, 4);
    add("e", 99, 0);
    splitter.start();
    EXPECT_TRUE(splitter.wantsMore());
    splitter.write("ab", 2);
    splitter.markDamaged(2); // bytes 2 and 3
    splitter.write("cde", 3);
    EXPECT_TRUE(splitter.wantsMore());
    add("late", 4, 9); // has lost its first byte
    splitter.write('f');
    EXPECT_FALSE(splitter.wantsMore());
    EXPECT_EQ(damaged, "b");
    // Any number of copies of a stream fits into a few records; one wrong size costs no other file.
    std::size_t begun = 0, small = 0;
    host.trap = [&](const std::string& step) {
        begun += step == "commit copy";
        small += step == "commit small";
    };
    add("huge", 6, 0xF0000000);
    add("small", 7, 1);
    splitter.write("gh", 2);
    EXPECT_EQ(small, 1u);
    for (int i = 0; i < 90; ++i)
        add("copy", 8, 1u << 30);
    splitter.write("ijk", 3);
    splitter.finish();
    EXPECT_EQ(begun, RangeSplitter::usual_at_once - 1 + RangeSplitter::shared_times + 1);
}

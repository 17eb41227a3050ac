#include "harbor6/model/format.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>
#include <sstream>

using pattern::AcquiredPtr;
using support::memory_host;

namespace {

struct described_format : harbor6::Format {
    explicit described_format(harbor6::HarborShell* host) : Format(host) {
        suffixes = {".s", ".t"};
        name_prefix = "pre-";
        compression_least = 2;
        compression_most = 9;
        compression_default = 5;
    }
    using Format::compression_level;
};

} // namespace

TEST(Format, AnswersItsKeys) {
    std::istringstream keys(
        "compressionDefault compressionLeast compressionMost fileSizeBits fileType fileCreator "
        "createsIndex isText macAttributes macFormat savesResources executable providesEmptyFile");
    std::string shown;
    for (std::string key; keys >> key;) {
        bool flag = false;
        std::int64_t number = 0;
        const described_format format(nullptr);
        if (format.getInteger(key, number))
            shown += std::to_string(number) + ' ';
        else
            shown += format.getBoolean(key, flag) ? flag ? "yes " : "no " : "none ";
    }
    EXPECT_EQ(shown, "5 2 9 32 0 0 no no no no no yes yes ");
}

TEST(Format, ClampsTheLevelAndStoresTheDefaultForAllOnes) {
    described_format format(nullptr);
    constexpr std::pair<int, int> levels[] = {{0, 2},      {2, 2},      {9, 9},  {10, 9},
                                              {0xFFFE, 9}, {0xFFFF, 5}, {-1, 5}, {0x10003, 3}};
    for (const auto& [set, level] : levels) {
        EXPECT_TRUE(format.setInteger("compressionLevel", set));
        EXPECT_EQ(format.integer("compressionLevel"), level) << set;
    }
    format.compression_level = 0xFFFF;
    EXPECT_EQ(format.integer("compressionLevel"), 5);
    EXPECT_TRUE(format.setInteger("preserveResourceFork", 0x100000005));
    EXPECT_EQ(format.integer("preserveResourceFork"), 5);
}

TEST(Format, NamesNewArchives) {
    memory_host host;
    described_format format(&host.shell);
    const auto root = host.root();
    const auto sample = host.source("a.txt", "");
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveInFolder(*root, nullptr); }),
              "un::implemented: harbor6::Format::_newEmptyArchiveAtItem");
    EXPECT_EQ(support::name_of(*AcquiredPtr(format.newFileInFolder(*root, sample.get()))), "pre-a.txt.s");
    EXPECT_EQ(support::name_of(*AcquiredPtr(format.newFileInFolder(*root, nullptr))), "pre-Archive.s");
    format.active = false;
    const std::string inactive = "un: attempt to create an archive using a deactivated format";
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveAtFile(*sample); }), inactive);
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveAtFolder(*root); }), inactive);
    EXPECT_EQ(support::refusal_of([&] { format.newArchiveInFolder(*root, nullptr); }), inactive);
}

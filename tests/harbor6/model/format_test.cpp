#include "harbor6/model/format.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>
#include <sstream>

using pattern::AcquiredPtr, support::memory_host;

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
    // Each key with the types for which the format has it, and the value.
    std::istringstream keys(
        "formatName s- suffix s.s isFile b0 isFolder b0 expandsArchives b0 recoversArchives b0 "
        "createsArchives b0 "
        "compressionLevel i0 compressionLeast i2 compressionMost i9 compressionDefault i5 isFileSystem b0 "
        "mimeType none isSegmented b0 fileType i0 fileCreator i0 isText b0 providesEmptyFile b1 executable "
        "b1 "
        "savesResources 0 macFormat 0 longName - fileSizeBits 32 preserveResourceFork bi0 macAttributes 0 "
        "createsIndex b0");
    const described_format format(nullptr);
    for (std::string key, expected; keys >> key >> expected;) {
        std::string answer = format.hasBoolean(key) ? "b" : "", text;
        answer += (format.hasInteger(key) ? "i" : "") + std::string(format.hasString(key) ? "s" : "");
        bool flag = false;
        std::int64_t number = 0;
        if (format.getInteger(key, number) || format.getBoolean(key, flag))
            answer += std::to_string(number + flag);
        else
            answer += !format.getString(key, text) ? "none" : text.empty() ? "-" : text;
        EXPECT_EQ(answer, expected) << key;
    }
}

TEST(Format, LetsOnlySomeIdsBeSet) {
    struct every_id : harbor6::Format {
        every_id() : Format(nullptr) {}
        void populateIndex() const override {
            for (std::uint16_t id = 0x4000; id <= 0x4052; ++id)
                index()[std::to_string(id)] = id;
        }
    } format;
    std::ostringstream settable;
    for (unsigned id = 0x4000; id <= 0x4052; ++id)
        if (format.modifiable(std::to_string(id)))
            settable << std::hex << id << ' ';
    EXPECT_EQ(settable.str(),
              "4000 4008 400f 4010 4013 4017 4018 401c 4020 4026 402b 4031 4032 4036 4037 4041 "
              "4042 4043 4044 4046 4047 404b 404f 4052 ");
    EXPECT_FALSE(format.modifiable("unknown"));
    EXPECT_EQ(format.formatQuery(2, 3), 1u);
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

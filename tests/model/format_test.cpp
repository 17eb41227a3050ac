#include "model/format.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using pattern::AcquiredPtr;
using support::memory_host;

namespace {

/// Every member differs from the others of its type and from what the constructor sets.
struct described_format : harbor6::Format {
    explicit described_format(harbor6::HarborShell* host = nullptr) : Format(host) {
        suffixes = {".s", ".t"};
        format_name = "name";
        long_name = "long";
        mime_type = "mime";
        name_prefix = "pre-";
        executable = false;
        preserve_resource_fork = 7;
        capabilities = creates_archives;
        is_segmented = is_text = recovers_archives = saves_resources = mac_format = mac_attributes = true;
        is_file = is_folder = true;
        provides_empty_file = false;
        compression_least = 2;
        compression_most = 9;
        compression_default = 5;
        compression_level = 4;
        file_size_bits = 64;
        model.file_info.type.code = 11;
        model.file_info.creator.code = 12;
    }
    bool isFileSystem() const override { return true; }
    std::uint16_t id(const std::string& key) const { return idFromName(key); }

    using Format::compression_level;
    using Format::long_name;
};

/// The value that `get...` gives, as text, behind the types for which `has...` is true, as letters.
std::string shown(const harbor6::Attributes& of, const std::string& key) {
    bool flag = false;
    std::string text;
    std::int64_t number = 0;
    return std::string(of.hasBoolean(key) ? "b" : "") + (of.hasString(key) ? "s" : "") +
           (of.hasInteger(key) ? "i" : "") + ":" + (of.getBoolean(key, flag) ? flag ? "yes" : "no" : "") +
           (of.getString(key, text) ? text : "") + (of.getInteger(key, number) ? std::to_string(number) : "");
}

} // namespace

TEST(Format, AnswersEveryKeyBeforeAndAfterItIsDescribed) {
    const struct {
        const char* key;
        std::uint16_t id;
        const char *fresh, *described;
        bool settable;
    } keys[] = {
        {"formatName", 0x4001, "s:", "s:name", false},
        {"suffix", 0x4002, ":", "s:.s", false},
        {"isFile", 0x4003, "b:no", "b:yes", false},
        {"isFolder", 0x4004, "b:no", "b:yes", false},
        {"expandsArchives", 0x4005, "b:no", "b:no", false},
        {"recoversArchives", 0x4006, "b:no", "b:yes", false},
        {"createsArchives", 0x4007, "b:no", "b:yes", false},
        {"compressionLevel", 0x4008, "i:0", "i:4", true},
        {"compressionLeast", 0x4009, "i:0", "i:2", false},
        {"compressionMost", 0x400A, "i:0", "i:9", false},
        {"isFileSystem", 0x400B, "b:no", "b:yes", false},
        {"mimeType", 0x400C, ":", "s:mime", false},
        {"isSegmented", 0x400D, "b:no", "b:yes", false},
        {"compressionDefault", 0x400E, "i:0", "i:5", false},
        {"fileType", 0x400F, "i:0", "i:11", true},
        {"fileCreator", 0x4010, "i:0", "i:12", true},
        {"providesEmptyFile", 0x4011, "b:yes", "b:no", false},
        {"isText", 0x4012, "b:no", "b:yes", false},
        {"savesResources", 0x4033, ":no", ":yes", false},
        {"macFormat", 0x4034, ":no", ":yes", false},
        {"longName", 0x4035, ":", ":long", false},
        {"preserveResourceFork", 0x4042, "bi:0", "bi:7", true},
        {"executable", 0x4043, "b:yes", "b:no", true},
        {"fileSizeBits", 0x4045, ":32", ":64", false},
        {"macAttributes", 0x4050, ":no", ":yes", false},
        {"createsIndex", 0x4051, "b:no", "b:no", false},
        {"name", 0xFFFF, ":", ":", false},
    };
    const harbor6::Format fresh(nullptr);
    described_format full;
    for (const auto& c : keys) {
        EXPECT_EQ(full.id(c.key), c.id) << c.key;
        EXPECT_EQ(shown(fresh, c.key), c.fresh) << c.key;
        EXPECT_EQ(shown(full, c.key), c.described) << c.key;
        EXPECT_EQ(full.modifiable(c.key), c.settable) << c.key;
        EXPECT_EQ(full.setBoolean(c.key, true), c.key == std::string("executable"));
    }
    EXPECT_TRUE(full.boolean("executable"));
    full.long_name.clear();
    EXPECT_EQ(full.string("longName"), "name");
}

TEST(Format, ClampsTheLevelAndStoresTheDefaultForAllOnes) {
    described_format format;
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
    EXPECT_FALSE(format.setInteger("fileSizeBits", 1));
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

    const AcquiredPtr<harbor6::Archive> made(host.arc.newArchiveAtFile(*sample));
    EXPECT_EQ(support::name_of(*sample), "a.txt"); // a file with a name keeps it
    host.arc.active = false;
    const std::string inactive = "un: attempt to create an archive using a deactivated format";
    EXPECT_EQ(support::refusal_of([&] { host.arc.newArchiveAtFile(*sample); }), inactive);
    EXPECT_EQ(support::refusal_of([&] { host.arc.newArchiveAtFolder(*root); }), inactive);
    EXPECT_EQ(support::refusal_of([&] { host.arc.newArchiveInFolder(*root, nullptr); }), inactive);
}

#include "formats/cab/cab_archive.h"
#include "harbor6/model/volume_source.h"
#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

using pattern::AcquiredPtr;
using support::cabinet;
using support::cabinet_host;

namespace {

constexpr std::size_t files_offset = 16, first_folder = 36, folder_size = 8;

std::string with(std::string bytes, std::size_t place, std::uint32_t value) {
    for (int i = 0; i < 4; ++i)
        bytes.at(place + static_cast<std::size_t>(i)) = static_cast<char>(value >> (8 * i));
    return bytes;
}

std::uint32_t word_at(const std::string& bytes, std::size_t place) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(place + static_cast<std::size_t>(i)));
    return value;
}

const std::string scan = "damaged: harbor6::cab::Archive::addContentTo: ";
const std::string crc = "damaged: crc harbor6::cab::Archive::addContentTo: CRC mismatch, data is invalid\n";

/// The lines of the transcript that tell damage.
std::string told(cabinet_host& host) {
    std::string lines;
    std::istringstream transcript(host.transcript());
    for (std::string line; std::getline(transcript, line);)
        if (line.starts_with("damaged") || line.starts_with("itemFailed"))
            lines += line + "\n";
    return lines;
}

/// Three folders with a file of 5 bytes each, in blocks of 3.
cabinet three_folders() {
    cabinet made;
    for (const char* name : {"a", "b", "c"}) {
        made.folder(support::stored).file(name, std::string(3, *name) + "45");
        made.folders.back().block_size = 3;
    }
    return made;
}

} // namespace

TEST(PublishedScan, LosesNothingThatIsSound) {
    const auto plain = three_folders().bytes();
    const auto data = [&](std::size_t i) { return word_at(plain, first_folder + i * folder_size); };
    auto gaps = plain;
    gaps.insert(word_at(plain, files_offset), "junk");
    for (const auto place : {files_offset, first_folder, first_folder + 8, first_folder + 16})
        gaps = with(gaps, place, word_at(plain, place) + 4);
    auto gap = with(plain, first_folder + folder_size, 0);
    gap.insert(data(0), "junk");
    for (const auto folder : {first_folder, first_folder + 2 * folder_size})
        gap = with(gap, folder, word_at(gap, folder) + 4);
    const auto behind = with(plain, files_offset, static_cast<std::uint32_t>(plain.size())) +
                        plain.substr(word_at(plain, files_offset), 54);
    cabinet packed;
    packed.folder(support::mszip).file("a", "aaaaa").file("b", "bbbbb");
    packed.folders.back().block_size = 5;
    // The place of the first folder's data is wrong: what is there looks like a block of 40 bytes.
    auto junk = plain;
    junk.insert(data(1), std::string("\1\0\0\0\x28\0\x28\0", 8));
    for (const auto folder : {first_folder + folder_size, first_folder + 2 * folder_size})
        junk = with(junk, folder, word_at(junk, folder) + 8);
    junk = with(junk, first_folder, data(1));
    const auto same_place =
        scan + "two folders state the same place for their data; the files of one may be wrong\n";
    const std::string all = "a=aaa45\nb=bbb45\nc=ccc45\n";
    const std::string senseless = scan + "the stated place of ";
    const auto edited = [](auto edit) {
        auto made = three_folders();
        edit(made);
        return made.bytes();
    };
    const struct {
        const char* name;
        std::string bytes, told, tree;
        harbor6::Archive::Options options{};
    } cases[] = {
        {"sound", plain, "", all},
        {"gaps in front of records and data", gaps, "", all},
        {"a damaged block", support::flip(plain, data(1) + 8), crc, "a=aaa45\nb=\nc=ccc45\n"},
        {"the second one damaged", support::flip(plain, data(1) + 19), crc, "a=aaa45\nb=bbb\nc=ccc45\n"},
        {"damaged, and so kept",
         support::flip(plain, data(1) + 19, 1),
         "itemFailed 1001 x\n",
         "a=aaa45\nb=bbb55\nc=ccc45\n",
         {.ignore_checksums = true}},
        {"a method that isn't supported",
         edited([](auto& c) { c.folders[1].compression = support::quantum; }),
         "damaged: format::cab::item_reader: quantum compression method not supported\n",
         "a=aaa45\nb=\nc=ccc45\n"},
        {"a folder that doesn't exist", edited([](auto& c) { c.files[0].folder_index = 3; }),
         scan + "a: invalid folder_index in file_header\n", "b=bbb45\nc=ccc45\n"},
        {"a next cabinet that doesn't exist", edited([](auto& c) { c.files[2].folder_index = 0xFFFE; }),
         scan + "c: invalid folder_index in file_header\n", "a=aaa45\nb=bbb45\n"},
        {"beyond its folder", edited([](auto& c) { c.files[1].size = 6, c.files[2].folder_offset = 6; }), "",
         "a=aaa45\nb=bbb45\n"},
        {"records in the header", with(plain, files_offset, 35),
         senseless + "the file records makes no sense; they are read behind the folder records\n", all},
        {"data in the header", with(plain, first_folder + 8, 0),
         senseless + "a folder's data makes no sense; they are read behind those of the folder before it\n",
         all},
        {"data behind the end", with(support::flip(plain, data(0) + 8), first_folder + 8, 1u << 30),
         crc + senseless +
             "a folder's data makes no sense; they are read behind those of the folder before it\n",
         "a=\nb=bbb45\nc=ccc45\n"},
        {"an empty folder behind a damaged one",
         with(with(with(support::flip(plain, data(0) + 8), first_folder + folder_size + 4, 0),
                   first_folder + 2 * folder_size, 0),
              first_folder + folder_size, data(1)),
         crc + senseless +
             "a folder's data makes no sense; they are read behind those of the folder before it\n",
         "a=\nb=\nc=bbb45\n"},
        {"data in the header, behind what isn't wanted",
         gap,
         senseless + "a folder's data makes no sense; they are read behind those of the folder before it\n",
         "b=bbb45\nc=ccc45\n",
         {.wanted_only = true}},
        {"data in others' data", with(plain, first_folder + 8, data(0)), same_place,
         "a=aaa45\nb=aaa45\nc=ccc45\n"},
        {"junk that seems to reach over others' data", junk, crc, "a=\nb=bbb45\nc=ccc45\n"},
        {"data cut", support::cut(plain, data(1) + 17),
         "damaged: format::cab::data_header: cut short: the input ends at byte " +
             std::to_string(data(1) + 17) + "\n",
         "a=aaa45\nb=bbb\nc=\n"},
        {"records behind the data, and cut", support::cut(behind, behind.size() - 1),
         "damaged: format::cab: cut short: the input ends at byte " + std::to_string(behind.size() - 1) +
             "\n",
         "a=aaa45\nb=bbb45\n"},
        {"a last block that seems to be longer", support::flip(plain, data(2) + 15, 0x40),
         "damaged: format::cab::data_header: cut short: the input ends at byte " +
             std::to_string(plain.size()) + "\n",
         "a=aaa45\nb=bbb45\nc=ccc\n"},
        {"a damaged block in front of the file",
         support::flip(edited([](auto& c) { c.files[1].folder_offset = 1, c.files[1].size = 4; }),
                       data(1) + 8),
         scan + "CRC mismatch, data is invalid\n", "a=aaa45\nc=ccc45\n"},
        {"a damaged block on which others depend",
         support::flip(packed.bytes(), word_at(packed.bytes(), first_folder)),
         "itemFailed 1001 x\nitemFailed 1001 x\n",
         "a=aaaaa\nb=bbbbb\n",
         {.ignore_checksums = true}},
        {"only what is wanted",
         support::flip(support::flip(plain, data(0) + 8), data(1) + 8),
         crc,
         "b=\nc=ccc45\n",
         {.wanted_only = true}},
        {"records alone",
         support::cut(edited([](auto& c) { c.file("empty", ""); }), data(0) + 22),
         "",
         "",
         {.records_only = true}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        for (const bool goes_on : {true, false}) {
            cabinet_host host(c.bytes);
            host.archive->options = c.options;
            host.archive->options.published_rules = true;
            host.client.goes_on = goes_on;
            if (c.options.wanted_only)
                host.client.declined = {"sourceFile a"};
            const auto refusal = host.expand();
            if (goes_on) {
                EXPECT_EQ(refusal, "");
                EXPECT_EQ(told(host), c.told);
                EXPECT_EQ(host.tree(), c.tree);
            } else { // the first damage ends the pass
                const bool damage = c.told.starts_with("damaged");
                EXPECT_EQ(refusal, damage ? c.told.substr(9, c.told.find('\n') - 9) : "");
            }
        }
    }
}

namespace {

/// Three volumes: a and e are in the first alone, b spans all, c and d are in the last. The second block of b
/// comes in two pieces, the third in three.
std::vector<cabinet> three_volumes() {
    std::vector<cabinet> set(3);
    for (std::uint16_t i = 0; i < 3; ++i) {
        auto& header = set[i].header;
        header.cabinet_index = static_cast<std::uint16_t>(i + 5);
        if (i > 0)
            header.previous = {std::string(1, static_cast<char>('0' + i - 1)), "disk"};
        if (i < 2)
            header.next = {std::string(1, static_cast<char>('0' + i + 1)), "disk"};
    }
    const auto b = [](std::uint16_t index) {
        return support::file_record{.name = "b", .size = 8, .folder_offset = 3, .folder_index = index};
    };
    set[0].folder(support::stored).file("e", "ee").folder(support::stored);
    set[0].file({.name = "a", .size = 3, .folder_index = 1}).file(b(0xFFFE));
    set[0].block({.payload = "aaab"}).block({.payload = "bb", .uncompressed_size = std::uint16_t{0}});
    set[1].folder(support::stored).file(b(0xFFFF));
    set[1].block({.payload = "b", .uncompressed_size = std::uint16_t{3}});
    set[1].block({.payload = "bb", .uncompressed_size = std::uint16_t{0}});
    set[2].folder(support::stored).file(b(0xFFFD));
    set[2].file({.name = "c", .size = 2, .folder_offset = 11});
    set[2].block({.payload = "bbcc", .uncompressed_size = std::uint16_t{6}});
    set[2].folder(support::stored).file("d", "dd");
    return set;
}

struct volumes_in_memory : harbor6::VolumeSource {
    harbor6::data::CountedInput openVolume(const harbor6::VolumeRequest& request) override {
        const auto found = files.find(request.name);
        return found == files.end() ? harbor6::data::CountedInput()
                                    : harbor6::data::CountedInput(new support::seekable_input(found->second));
    }
    std::map<std::string, std::string> files;
};

} // namespace

TEST(PublishedScan, ReadsASetOfCabinets) {
    using volumes = std::vector<cabinet>;
    const std::string all = "a=aaa\nb=bbbbbbbb\nc=cc\nd=dd\ne=ee\n";
    const std::string cut_off = "a=aaa\nb=bbb\ne=ee\n", rest = "a=aaa\nb=bbb\nd=dd\ne=ee\n";
    const struct {
        const char* name;
        std::function<void(volumes&)> edit;
        std::string told, tree;
        std::function<void(std::map<std::string, std::string>&)> damage = [](auto&) {};
        std::string from = "0";
        std::set<std::string> declined{};
    } cases[] = {
        {"sound", [](volumes&) {}, "", all},
        {"from the last", [](volumes&) {}, "", all, [](auto&) {}, "2"},
        {"from the middle, and only what is wanted",
         [](volumes&) {},
         "",
         "c=cc\n",
         [](auto&) {},
         "1",
         {"sourceFile a", "sourceFile b", "sourceFile d", "sourceFile e"}},
        {"the next one missing", [](volumes&) {}, scan + "1 (disk disk), in which it goes on, is missing\n",
         cut_off, [](auto& files) { files.erase("1"); }},
        {"the first one missing", [](volumes&) {},
         scan + "0 (disk disk), from which it goes on, is missing\n", "d=dd\n",
         [](auto& files) { files.erase("0"); }, "1"},
        {"one before number 0",
         [](volumes& s) { s[1].header.cabinet_index = 0, s[2].header.cabinet_index = 1; },
         scan + "0 can't come before number 0 of its set\n", "d=dd\n", [](auto&) {}, "1"},
        {"another set", [](volumes&) {}, scan + "1 is a part of another set of cabinets\n", cut_off,
         [](auto& files) { files["1"][32] ^= 1; }},
        {"a circle", [](volumes&) {}, scan + "2 has the number 6 in its set, and number 7 is needed\n",
         "a=aaa\nb=bbbbbb\ne=ee\n", [](auto& files) { files["2"] = files["1"]; }},
        {"no cabinet", [](volumes&) {}, scan + "1: bad header artifact\n", cut_off,
         [](auto& files) { files["1"] = "text"; }},
        {"cut in its records", [](volumes&) {}, scan + "1: cut short: the input ends at byte 72\n", rest,
         [](auto& files) { files["1"].resize(72); }},
        {"cut in a piece", [](volumes&) {}, scan + "1: cut short: the input ends at byte 93\n",
         "a=aaa\nb=bbbb\nd=dd\ne=ee\n", [](auto& files) { files["1"].resize(93); }},
        {"a piece damaged", [](volumes& s) { s[0].folders[1].blocks[1].checksum = 1; }, crc,
         "a=aaa\nb=b\nd=dd\ne=ee\n"},
        {"a later piece damaged", [](volumes& s) { s[1].folders[0].blocks[0].checksum = 1; },
         scan + "1: CRC mismatch, data is invalid\n", rest},
        {"another method", [](volumes& s) { s[1].folders[0].compression = support::mszip; },
         scan + "1: a folder goes on there with another compression method\n", rest},
        {"no folder that goes on", [](volumes& s) { s[1].files.clear(); },
         scan + "1: a folder should go on there, but no file says so\n", rest},
        {"pieces without an end", [](volumes& s) { s[2].folders[0].block_count = std::uint16_t{0}; },
         scan + "2: the rest of a block is missing at the folder's end\n", "a=aaa\nb=bbbbbb\nd=dd\ne=ee\n"},
        {"pieces that are too long", [](volumes& s) { s[1].folders[0].blocks[1].payload.resize(65535); },
         scan + "2: the pieces of a block are too long together\n", "a=aaa\nb=bbbb\nd=dd\ne=ee\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto set = three_volumes();
        c.edit(set);
        volumes_in_memory source;
        for (std::size_t i = 0; i < set.size(); ++i)
            source.files[std::to_string(i)] = set[i].bytes();
        c.damage(source.files);
        cabinet_host host(source.files.at(c.from));
        host.archive->options = {.published_rules = true, .wanted_only = !c.declined.empty()};
        host.archive->volumes = &source;
        host.client.goes_on = true;
        host.client.declined = c.declined;
        EXPECT_EQ(host.expand(), "");
        EXPECT_EQ(told(host), c.told);
        EXPECT_EQ(host.tree(), c.tree);
        host.archive->volumes = nullptr;
        host.client.goes_on = false;
        EXPECT_NE(host.expand(), "") << "without a host that has the others";
    }
}

TEST(PublishedScan, AWalkGivesTheFilesOfOnePass) {
    for (const std::string name : {"share", "overlap", "order"}) {
        cabinet_host host(support::read_file(HARBOR_TEST_DATA "/" + name + ".cab"));
        host.archive->options.published_rules = true;
        EXPECT_EQ(host.expand(), "");
        const auto one_pass = host.tree();
        host.tree_root->children.clear();
        host.archive->open(harbor6::Archive::mode_read);
        host.root()->_addContent(*host.archive, nullptr);
        EXPECT_TRUE(host.tree() == one_pass) << name;
    }
}

TEST(PublishedScan, ChangesNothingWhereBothWaysOfReadingApply) {
    const std::set<std::string> need_the_rules = {
        "calls-borders", "files-last",       "gaps",  "order",    "overlap", "raw-odd", "refuse-continued",
        "reserve-10",    "reserve-7-filled", "share", "uncovered"};
    std::set<std::string> different;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(HARBOR_TEST_DATA)) {
        if (entry.path().extension() != ".cab")
            continue;
        const auto bytes = support::read_file(entry.path());
        if (constexpr std::size_t flags = 30; bytes.size() > flags && bytes[flags] & 1)
            continue; // it continues another one
        const auto expand = [&](bool published) {
            cabinet_host host(bytes);
            host.archive->options.published_rules = published;
            const auto refusal = host.expand();
            return std::tuple(refusal, host.transcript(), host.tree());
        };
        if (expand(false) != expand(true))
            different.insert(entry.path().stem().string());
    }
    EXPECT_EQ(different, need_the_rules);
}

TEST(PublishedScan, LimitsWhatAFewRecordsCanAskFor) {
    cabinet made;
    std::string a_few;
    for (char name = 'a'; name < 'a' + 30; ++name)
        made.folder(support::stored).file(std::string(1, name), std::string(30000, '.'));
    auto bytes = made.bytes();
    for (std::size_t i = 1; i < 30; ++i)
        bytes = with(bytes, first_folder + i * folder_size, word_at(bytes, first_folder));
    cabinet_host folders(bytes);
    folders.archive->options.published_rules = true;
    folders.client.goes_on = true;
    EXPECT_EQ(folders.expand(), "");
    std::string refusals =
        scan + "two folders state the same place for their data; the files of one may be wrong\n";
    for (int i = 17; i < 30; ++i)
        refusals += "damaged: harbor6::cab::Archive: too many folders share data: 16 times the cabinet's "
                    "bytes have been read\n";
    EXPECT_EQ(told(folders), refusals);

    cabinet files;
    files.folder(support::stored).block({.payload = "12345"});
    for (int i = 0; i < 85; ++i)
        files.file({.name = std::to_string(i), .size = 1u << 30, .folder_offset = 0});
    cabinet_host shared(files.bytes());
    shared.archive->options.published_rules = true;
    shared.client.goes_on = true;
    EXPECT_EQ(shared.expand(), "");
    EXPECT_EQ(told(shared), scan + "the files of a folder share too many bytes: 5 of them, beyond 64 times "
                                   "its bytes and 1 GiB, are left out\n");
}

#include "harbor6/model/archive_finder.h"

#include "formats/cab/cab_format.h"
#include "harbor6/model/classifier.h"
#include "support/cabinet_writer.h"
#include "support/memory_streams.h"

#include <gtest/gtest.h>

namespace {

using harbor6::ArchiveFinder;
using support::cabinet;

/// A format that states neither first bytes nor sizes: "toy" and a digit.
struct toy_format : harbor6::SuperFormat {
    struct recognises : format::classifier {
        recognises() : classifier(1, 1) {}
        unsigned matches_at(unsigned offset) const override {
            return std::string_view(sample.begin() + offset, sample.length() - offset).starts_with("toy");
        }
        bool confirm_at(unsigned offset) override {
            stream::array_input bytes(sample, offset + 3);
            return std::isdigit(bytes.read());
        }
    };
    toy_format() : SuperFormat(nullptr) { format_name = "toy"; }
    format::classifier* _newClassifier() override { return new recognises; }
};

/// A pipe: neither seeks nor knows its size.
struct pipe_input : support::memory_input {
    using memory_input::memory_input;
    std::uint64_t size() const override { return ~std::uint64_t{0}; }
};

/// As "cab@OFFSET+SIZE " for each archive, with "!" if it is cut, and "?" at the end if not all was tested.
std::string found_in(stream::input& bytes) {
    harbor6::Classifier formats;
    formats.addFormat(*new harbor6::cab::Format(nullptr));
    formats.addFormat(*new toy_format);
    std::string result;
    ArchiveFinder finder(formats, bytes);
    for (harbor6::FoundArchive found; finder.next(found);)
        result += found.format->string(harbor6::key::formatName) + '@' + std::to_string(found.offset) +
                  (found.size == found.unknown_size ? "" : '+' + std::to_string(found.size)) +
                  (found.cut ? "! " : " ");
    return result + (finder.passedOver() ? "?" : "");
}

TEST(ArchiveFinder, FindsWhatIsAnArchiveAndNothingElse) {
    const auto one = cabinet().file("a", "one").bytes();
    const auto in_one = cabinet().file("in.cab", one).file("b", "two").bytes();
    cabinet reserve;
    reserve.header.reserve.emplace().header = std::string(60000, 'r');
    cabinet endless;
    endless.header.next = {std::string(300, 'n'), "disk"};
    const auto large = reserve.file("c", std::string(300000, 'c')).bytes();
    const auto with = [&](std::size_t place, int mask) { return support::flip(one, place, mask) + "..."; };
    const auto sized = [](const std::string& bytes) { return '+' + std::to_string(bytes.size()); };
    const auto stub = std::string(70001, '\0');
    const struct {
        std::string bytes, found;
        std::string from_pipe = found;
    } cases[] = {
        {"", ""},
        {"MSC" + one, "cab@3" + sized(one) + ' '},
        {stub + one + "tail", "cab@70001" + sized(one) + ' '},
        {one + '.' + in_one + one, "cab@0" + sized(one) + " cab@" + std::to_string(one.size() + 1) +
                                       sized(in_one) + " cab@" +
                                       std::to_string(one.size() + 1 + in_one.size()) + sized(one) + ' '},
        {"x" + large + one,
         "cab@1" + sized(large) + " cab@" + std::to_string(1 + large.size()) + sized(one) + ' '},
        {"." + support::cut(in_one, in_one.size() - 1),
         "cab@1" + sized(in_one) + "! cab@" + std::to_string(1 + in_one.find(one)) + sized(one) + ' ',
         "cab@1" + sized(in_one) + "! "},
        {"toy" + one + "toy7toy8", "cab@3" + sized(one) + " toy@" + std::to_string(3 + one.size()) + " toy@" +
                                       std::to_string(7 + one.size()) + ' '},
        // What only looks like a cabinet: the signature alone, and heads that contradict themselves.
        {"MSCF" + std::string(40, '\0') + "MSCF", ""},
        {support::cut(one, 36) + std::string(200, 't'), ""},
        {endless.file("a", "one").bytes(), ""}, // name of the next cabinet
        {with(4, 1), ""},                       // checksum
        {with(8, 0x70), ""},                    // stated size
        {with(16, 0x80), ""},                   // offset of the file records
        {with(24, 2), ""},                      // version
        {with(26, 1), ""},                      // no folder
        {with(39, 0x40), ""},                   // offset of the folder's data
        {with(42, 0x0F), ""},                   // method
        {with(52, 1), ""},                      // a file's folder
        {with(60, 'a'), ""},                    // a file's name
        {with(0, 0x20), ""},
    };
    for (const auto& [bytes, found, from_pipe] : cases) {
        SCOPED_TRACE(testing::PrintToString(bytes.substr(0, 60)));
        support::seekable_input file(bytes, 999);
        EXPECT_EQ(found_in(file), found);
        pipe_input pipe(bytes);
        EXPECT_EQ(found_in(pipe), from_pipe);
    }
}

TEST(ArchiveFinder, FindsAnArchiveWhereverItLiesInTheWindow) {
    const auto one = cabinet().file("a", "one").bytes();
    for (const unsigned edge : {128 * 1024u - ArchiveFinder::sample_size, 128 * 1024u, 256 * 1024u})
        for (const int step : {-70, -36, -35, -5, -4, -3, -1, 0, 1}) {
            const auto before = edge + static_cast<unsigned>(step);
            support::seekable_input file(std::string(before, 'M') + one);
            EXPECT_EQ(found_in(file),
                      "cab@" + std::to_string(before) + '+' + std::to_string(one.size()) + ' ');
        }
}

TEST(ArchiveFinder, SeeksSeldomHoweverManyHeadsPointElsewhere) {
    struct counting_input : support::seekable_input {
        using seekable_input::seekable_input;
        bool seek(std::uint64_t value) override { return ++seeks, seekable_input::seek(value); }
        unsigned seeks = 0;
    };
    const auto one = cabinet().file("a", "one").bytes();
    auto head = one.substr(0, 44);
    head.replace(8, 4, std::string("\0\0\x09\0", 4)).replace(16, 4, std::string("\0\0\x08\0", 4));
    std::string bytes;
    for (int i = 0; i < 3000; ++i)
        bytes += head;
    bytes += std::string(0x90000, '\0');
    counting_input file(bytes + one);
    const auto found = found_in(file);
    EXPECT_NE(found.find("cab@" + std::to_string(bytes.size())), std::string::npos);
    EXPECT_TRUE(found.ends_with(" ?"));
    EXPECT_GT(file.seeks, 200u);
    EXPECT_LT(file.seeks, 400u);
}

} // namespace

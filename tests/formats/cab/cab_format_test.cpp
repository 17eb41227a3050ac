#include "formats/cab/cab_format.h"
#include "support/cabinet_writer.h"
#include "support/refusal.h"

#include <climits>
#include <gtest/gtest.h>

using support::cabinet;

namespace {

struct shown : format::cab::classifier {
    explicit shown(const std::string& bytes) : classifier(1) {
        sample = un::array<char>(bytes.data(), static_cast<unsigned>(bytes.size()));
    }
};

} // namespace

TEST(Classifier, MatchesTheSignatureWithOneMoreByteBehindIt) {
    const struct {
        std::string sample;
        unsigned offset, match;
    } cases[] = {
        {"MSCF", 0, 0},    {"MSCFx", 0, 1}, {"MSCfx", 0, 0},        {"..MSCFx", 2, 1},
        {"..MSCFx", 3, 0}, {"MSCFx", 5, 0}, {"MSCFx", UINT_MAX, 0}, {"MSCFx", UINT_MAX - 3, 0},
        {"", 0, 0},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shown(c.sample).matches_at(c.offset), c.match) << c.sample << ' ' << c.offset;
}

TEST(Classifier, ConfirmsASoundCabinetThatBeginsItsSet) {
    const struct {
        const char* name;
        std::function<void(support::header_record&)> set;
        bool confirmed;
    } cases[] = {
        {"a sound one", [](auto&) {}, true},
        {"a wrong checksum", [](auto& h) { h.checksum = 1; }, false},
        {"another version", [](auto& h) { h.version = 0x0104, h.cabinet_index = 0xFFFF; }, true},
        {"a previous cabinet", [](auto& h) { h.previous.emplace(); }, false},
        {"a next cabinet", [](auto& h) { h.next.emplace(); }, true},
    };
    for (const auto& [name, set, confirmed] : cases) {
        SCOPED_TRACE(name);
        cabinet made;
        set(made.header);
        const auto bytes = "prefix" + made.bytes();
        shown classifier(bytes);
        EXPECT_EQ(classifier.confirm_at(6), confirmed);
        EXPECT_EQ(support::refusal_of([&] { classifier.confirm_at(7 + 36); }),
                  "stream::little_endian_input: unexpected end of stream");
    }
}

TEST(CabFormat, MakesARecogniserWithTheNumbersOfTheFormat) {
    const std::unique_ptr<format::classifier> made(harbor6::cab::Format(nullptr)._newClassifier());
    EXPECT_EQ(std::tuple(made->format_number, made->identifier, made->default_result()),
              std::tuple(35u, 2001u, 0u));
}

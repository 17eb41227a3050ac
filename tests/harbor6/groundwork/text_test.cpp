#include "harbor6/groundwork/text.h"

#include "harbor6/groundwork/time.h"
#include "support/refusal.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

/// Puts the default code page back.
struct chosen_page {
    explicit chosen_page(const std::string& name) { nio::set_code_page(name); }
    ~chosen_page() { nio::set_code_page(""); }
};

TEST(Text, DecodesByTheChosenPageOrAsUtf8OrElseAsWindows1252) {
    const struct {
        const char* page;
        std::string bytes;
        std::wstring text;
    } cases[] = {
        {"", "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", L"a\u00E4\u20AC\U0001F600"},
        {"", "\xF4\x8F\xBF\xBF", L"\U0010FFFF"},
        {"", "\x80\x9F\xA0\xFF", L"\u20AC\u0178\u00A0\u00FF"},
        {"", "\x81\x8D\x8F\x90\x9D", L"\x81\x8D\x8F\x90\x9D"}, // the holes
        {"", "\xC3\xA4\xE4", L"\u00C3\u00A4\u00E4"},           // one bad byte decides for all
        {"", "\xC0\xAF", L"\u00C0\u00AF"},                     // '/' in two bytes
        {"", "\xE0\x80\xAF", L"\u00E0\u20AC\u00AF"},           // in three
        {"", "\xF0\x82\x82\xAC", L"\u00F0\u201A\u201A\u00AC"}, // the euro sign in four
        {"", "\xED\xA0\x80", L"\u00ED\u00A0\u20AC"},           // a surrogate
        {"", "\xF4\x90\x80\x80", L"\u00F4\u0090\u20AC\u20AC"}, // above U+10FFFF
        {"", "\xE2\x82", L"\u00E2\u201A"},                     // cut short
        {"CP437", "\x84\xE4", L"\u00E4\u03A3"},
        {"SHIFT_JIS", "\x83\x65\x83", L"\u30C6\uFFFD"},
        {"CP949", "\xB0\xA1\xA2\xE8", L"\uAC00\uFFFD"}, // unreadable, yet the converter takes it
    };
    for (const auto& c : cases) {
        const chosen_page page(c.page);
        const std::vector<char> bytes(c.bytes.begin(), c.bytes.end()); // nothing stands behind them
        EXPECT_NE(support::refusal_of([] { nio::set_code_page("no such page"); }), "");
        EXPECT_EQ(nio::decode({bytes.data(), bytes.size()}, -1), c.text) << &c - cases;
    }
    EXPECT_EQ(nio::to_utf8(L"a\u00E4\u20AC\U0001F600"), "a\u00E4\u20AC\U0001F600");
    const std::wstring bad{static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000)};
    EXPECT_EQ(nio::to_utf8(bad), "\uFFFD\uFFFD");
}

TEST(Text, PrintsNothingThatATerminalActsOn) {
    const std::pair<std::string, const char*> cases[] = {
        {"d/\u00E4 \\", "d/\u00E4 \\"},
        {"\x1b[2J\n\x7F", "\\x1b[2J\\x0a\\x7f"},
        {"\u009B", "\\u{9b}"},
        {"\u202Etxt\u2066\u200F", "\\u{202e}txt\\u{2066}\\u{200f}"},
        {"\u2028\u2029", "\\u{2028}\\u{2029}"},
        {"\xE4\xC3", "\\xe4\\xc3"},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(nio::printable(text), shown);
}

TEST(Time, SetsFieldsThatNoCalendarHasToTheNearest) {
    const struct {
        unsigned date, time; ///< year - 1980, month, day: 7, 4, 5 bits; hour, minute, second / 2: 5, 6, 5
        any::time meant;
    } cases[] = {
        {0x305D, 0x6CB5, {{2004, 2, 29, 13, 37, 42}}},
        {0, 0, {{1980, 1, 1, 0, 0, 0}}},
        {0xFFFF, 0xFFFF, {{2107, 12, 31, 23, 59, 58}}},
        {20 << 9 | 2 << 5 | 30, 24 << 11, {{2000, 2, 29, 23, 0, 0}}},
        {21 << 9 | 2 << 5 | 29, 60 << 5 | 30, {{2001, 2, 28, 0, 59, 58}}},
        {120 << 9 | 2 << 5 | 29, 29, {{2100, 2, 28, 0, 0, 58}}}, // no leap year
        {1 << 9 | 13 << 5 | 31, 0, {{1981, 12, 31, 0, 0, 0}}},
        {1 << 9 | 4 << 5 | 31, 0, {{1981, 4, 30, 0, 0, 0}}},
    };
    for (const auto& c : cases) {
        fs::time set;
        set.set_dos(static_cast<std::uint16_t>(c.date), static_cast<std::uint16_t>(c.time));
        EXPECT_EQ(any::time(set), c.meant) << &c - cases;
    }
}

} // namespace

#include "harbor6/groundwork/text.h"

#include "support/refusal.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(Text, DecodesByTheChosenPageOrAsUtf8OrElseAsWindows1252) {
    const struct {
        const char *name, *page;
        std::string bytes;
        std::wstring text;
    } cases[] = {
        {"UTF-8", "", "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", L"a\u00E4\u20AC\U0001F600"},
        {"the last code point", "", "\xF4\x8F\xBF\xBF", L"\U0010FFFF"},
        {"Windows-1252", "", "\x80\x9F\xA0\xFF", L"\u20AC\u0178\u00A0\u00FF"},
        {"undefined in Windows-1252", "", "\x81\x8D\x8F\x90\x9D", L"\x81\x8D\x8F\x90\x9D"},
        {"one bad byte decides for all", "", "\xC3\xA4\xE4", L"\u00C3\u00A4\u00E4"},
        {"slash in two bytes", "", "\xC0\xAF", L"\u00C0\u00AF"},
        {"slash in three bytes", "", "\xE0\x80\xAF", L"\u00E0\u20AC\u00AF"},
        {"euro sign in four bytes", "", "\xF0\x82\x82\xAC", L"\u00F0\u201A\u201A\u00AC"},
        {"a surrogate", "", "\xED\xA0\x80", L"\u00ED\u00A0\u20AC"},
        {"above U+10FFFF", "", "\xF4\x90\x80\x80", L"\u00F4\u0090\u20AC\u20AC"},
        {"cut short", "", "\xE2\x82", L"\u00E2\u201A"},
        {"a page of one byte each", "CP437", "\x84\xE4", L"\u00E4\u03A3"},
        {"a page of two bytes, cut short", "SHIFT_JIS", "\x83\x65\x83", L"\u30C6\uFFFD"},
        {"invalid, yet consumed by the converter", "CP949", "\xB0\xA1\xA2\xE8", L"\uAC00\uFFFD"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        nio::set_code_page(c.page);
        const std::vector<char> bytes(c.bytes.begin(), c.bytes.end()); // no terminator after them
        EXPECT_NE(support::refusal_of([] { nio::set_code_page("no such page"); }), "");
        EXPECT_EQ(nio::decode({bytes.data(), bytes.size()}, -1), c.text);
        nio::set_code_page("");
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

} // namespace

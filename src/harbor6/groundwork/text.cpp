#include "harbor6/groundwork/text.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/platform.h"

#include <algorithm>
#include <memory>
#include <new>

namespace nio {

namespace {

static_assert(sizeof(wchar_t) == 4, "wide strings hold one code point per unit");

constexpr char32_t replacement = 0xFFFD;

// Windows-1252 from 0x80 to 0x9F; an undefined byte maps to the code point of the same number.
constexpr char16_t windows_1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

std::shared_ptr<const platform::code_page>& chosen_page() {
    static std::shared_ptr<const platform::code_page> page;
    return page;
}

constexpr bool is_scalar(char32_t point) {
    return point < 0xD800 || (point > 0xDFFF && point <= 0x10FFFF);
}

/// Removes one code point from the front of `text`. False, with `text` unchanged, if it doesn't begin with a
/// well-formed one: over-long forms, surrogates and values above U+10FFFF are not well-formed.
bool take_utf8(std::string_view& text, char32_t& point) {
    const auto lead = static_cast<unsigned char>(text.front());
    unsigned length = 1;
    char32_t least = 0;
    if (lead < 0x80) {
        point = lead;
    } else if (lead >= 0xC2 && lead < 0xE0) {
        length = 2, least = 0x80, point = lead & 0x1F;
    } else if (lead >= 0xE0 && lead < 0xF0) {
        length = 3, least = 0x800, point = lead & 0x0F;
    } else if (lead >= 0xF0 && lead < 0xF5) {
        length = 4, least = 0x10000, point = lead & 0x07;
    } else {
        return false;
    }
    if (text.size() < length)
        return false;
    for (unsigned i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80)
            return false;
        point = point << 6 | (next & 0x3F);
    }
    if (point < least || !is_scalar(point))
        return false;
    text.remove_prefix(length);
    return true;
}

void append_utf8(std::string& out, char32_t point) {
    if (!is_scalar(point))
        point = replacement;
    if (point < 0x80) {
        out += static_cast<char>(point);
        return;
    }
    const int tails = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    constexpr unsigned leads[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(leads[tails] | point >> (6 * tails));
    for (int i = tails - 1; i >= 0; --i)
        out += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
}

/// Whether a terminal might act on `point` rather than show it.
constexpr bool is_unsafe(char32_t point) {
    return point < 0x20 || (point >= 0x7F && point < 0xA0) || point == 0x061C || point == 0x200E ||
           point == 0x200F || (point >= 0x2028 && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069);
}

/// Most text: it is the same in every encoding that is tried here, and in all widths of characters.
template<class Text>
bool is_ascii(const Text& text) {
    return std::all_of(text.begin(), text.end(), [](auto unit) { return unit >= 0 && unit < 0x80; });
}

} // namespace

std::string stem(std::string_view path, char separator) {
    const auto last = path.rfind(separator);
    return std::string(last == path.npos ? std::string_view() : path.substr(0, last));
}

std::string leaf(std::string_view path, char separator) {
    const auto last = path.rfind(separator);
    return std::string(last == path.npos ? path : path.substr(last + 1));
}

std::wstring decode(std::string_view text, int encoding) {
    const auto page = chosen_page();
    if (page && encoding != encoding_utf8)
        return page->decode(text);
    if (is_ascii(text))
        return {text.begin(), text.end()};
    std::wstring wide;
    wide.reserve(text.size());
    auto rest = text;
    for (char32_t point; !rest.empty() && take_utf8(rest, point);)
        wide += static_cast<wchar_t>(point);
    if (rest.empty())
        return wide;
    if (page)
        return page->decode(text);
    wide.clear();
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        wide += static_cast<wchar_t>(byte >= 0x80 && byte < 0xA0 ? windows_1252[byte - 0x80] : byte);
    }
    return wide;
}

std::string to_utf8(std::wstring_view wide) {
    std::string text;
    text.reserve(wide.size());
    if (is_ascii(wide)) {
        for (const wchar_t unit : wide)
            text += static_cast<char>(unit);
        return text;
    }
    for (const wchar_t unit : wide)
        append_utf8(text, static_cast<char32_t>(unit));
    return text;
}

void set_code_page(const std::string& name) {
    chosen_page() = name.empty() ? nullptr : std::make_shared<const platform::code_page>(name);
}

std::string printable(std::string_view utf8) {
    const auto is_plain = [](char c) { return c >= 0x20 && c < 0x7F; };
    const auto plain = std::find_if_not(utf8.begin(), utf8.end(), is_plain) - utf8.begin();
    std::string text(utf8.substr(0, static_cast<std::size_t>(plain)));
    utf8.remove_prefix(text.size());
    while (!utf8.empty()) {
        char32_t point;
        if (!take_utf8(utf8, point)) {
            text += "\\x" + un::write(static_cast<unsigned char>(utf8.front()), 16, 2);
            utf8.remove_prefix(1);
        } else if (is_unsafe(point)) {
            text += point < 0x80 ? "\\x" + un::write(point, 16, 2) : "\\u{" + un::write(point, 16, 1) + "}";
        } else {
            append_utf8(text, point);
        }
    }
    return text;
}

std::string failure_text(const std::exception_ptr& failure) {
    std::string text;
    try {
        std::rethrow_exception(failure);
    } catch (const basic::bad_alloc&) {
        text = "out of memory";
    } catch (const std::bad_alloc&) {
        text = "out of memory";
    } catch (const std::exception& known) {
        text = known.what();
    } catch (...) {
    }
    return text.empty() ? "unknown failure" : printable(text);
}

} // namespace nio

namespace un {

std::string write(std::uint64_t value, unsigned base, unsigned digits) {
    std::string text;
    while (value != 0 || text.size() < digits) {
        text += "0123456789abcdefghijklmnopqrstuvwxyz"[value % base];
        value /= base;
    }
    std::reverse(text.begin(), text.end());
    return text;
}

} // namespace un

#include "host/selection.h"

#include <algorithm>
#include <locale>

namespace host {

namespace {

constexpr auto none = std::string_view::npos;
constexpr char wildcards[] = "*?[";

/// Number of bytes of the UTF-8 character at `place`; 1 for what is no UTF-8.
std::size_t character_length(std::string_view text, std::size_t place) {
    const auto first = static_cast<unsigned char>(text[place]);
    const std::size_t stated = first < 0xC2 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 1;
    if (stated > text.size() - place)
        return 1;
    for (std::size_t i = 1; i < stated; ++i)
        if ((static_cast<unsigned char>(text[place + i]) & 0xC0) != 0x80)
            return 1;
    return stated;
}

/// Takes the next character from `text`, which isn't empty, in an order that is that of code points.
std::string_view take_character(std::string_view& text) {
    const auto taken = text.substr(0, character_length(text, 0));
    text.remove_prefix(taken.size());
    return taken;
}

/// The length of the set "[...]" at the start of `pattern`, 0 if it has no end. The set may begin with ']'.
std::size_t set_length(std::string_view pattern) {
    const std::size_t first = pattern.size() > 1 && (pattern[1] == '!' || pattern[1] == '^') ? 2 : 1;
    const auto end = pattern.find(']', first + 1);
    return end == none ? 0 : end + 1;
}

/// Whether the set "[...]" contains the character.
bool set_contains(std::string_view set, std::string_view character) {
    set = set.substr(1, set.size() - 2);
    const bool excluding = set.front() == '!' || set.front() == '^';
    if (excluding)
        set.remove_prefix(1);
    bool found = false;
    while (!set.empty()) {
        const auto low = take_character(set);
        auto high = low;
        if (set.size() > 1 && set.front() == '-') {
            set.remove_prefix(1);
            high = take_character(set);
        }
        // The order of UTF-8 is that of code points.
        found = found || (low <= character && character <= high);
    }
    return found != excluding;
}

/// A step of matches(): how much of pattern and text one character of the text uses; 0 if it doesn't fit.
struct step {
    std::size_t of_pattern = 0;
    std::size_t of_text = 0;
};

step match_character(std::string_view pattern, std::string_view text) {
    if (pattern.empty())
        return {};
    if (pattern.front() == '?')
        return text.front() == '/' ? step{} : step{1, character_length(text, 0)};
    if (const auto length = pattern.front() == '[' ? set_length(pattern) : 0) {
        const auto character = text.substr(0, character_length(text, 0));
        const bool fits = text.front() != '/' && set_contains(pattern.substr(0, length), character);
        return fits ? step{length, character.size()} : step{};
    }
    return pattern.front() == text.front() ? step{1, 1} : step{};
}

/// Calls `each` with the ends of the names in `path`, the last one included, until it has seen all.
template<class Each>
void for_each_name(std::string_view path, Each each) {
    for (std::size_t start = 0, end; start < path.size(); start = end + 1) {
        end = std::min(path.find('/', start), path.size());
        each(start, end);
    }
}

/// The letters of all languages, if the system knows them.
const std::ctype<wchar_t>& letters() {
    static const std::locale known = [] {
        try {
            return std::locale("C.UTF-8");
        } catch (const std::runtime_error&) {
            return std::locale::classic();
        }
    }();
    return std::use_facet<std::ctype<wchar_t>>(known);
}

} // namespace

std::string lower_case(std::string_view utf8) {
    std::string result;
    result.reserve(utf8.size());
    while (!utf8.empty()) {
        const auto bytes = take_character(utf8);
        wchar_t letter = 0;
        if (bytes.size() == 1) {
            const char c = bytes.front();
            result += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
            continue;
        }
        letter = static_cast<wchar_t>(static_cast<unsigned char>(bytes[0]) & (0x7Fu >> bytes.size()));
        for (const char c : bytes.substr(1))
            letter = static_cast<wchar_t>(letter << 6 | (static_cast<unsigned char>(c) & 0x3F));
        const auto lower = static_cast<unsigned>(letters().tolower(letter));
        const auto tail = [&](int shift) { return static_cast<char>(0x80 | (lower >> shift & 0x3F)); };
        if (lower == static_cast<unsigned>(letter))
            result += bytes;
        else if (lower < 0x80)
            result += static_cast<char>(lower);
        else if (lower < 0x800)
            (result += static_cast<char>(0xC0 | lower >> 6)) += tail(0);
        else if (lower < 0x10000)
            ((result += static_cast<char>(0xE0 | lower >> 12)) += tail(6)) += tail(0);
        else
            (((result += static_cast<char>(0xF0 | lower >> 18)) += tail(12)) += tail(6)) += tail(0);
    }
    return result;
}

bool matches(std::string_view pattern, std::string_view text) {
    // On a mismatch only the last star of each kind can take more, which bounds the work: '*' goes on between
    // two slashes, '**' steps on by one character each time, and "**/" by one folder.
    struct star {
        std::size_t in_pattern = none;
        std::size_t in_text = 0;
        bool by_folder = false;
    } narrow, wide;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size()) {
        if (pattern.substr(p, 2) == "**") {
            const bool folders = pattern.substr(p, 3) == "**/" && (p == 0 || pattern[p - 1] == '/');
            p += folders ? 3 : 2;
            wide = {p, t, folders};
            narrow = {};
        } else if (p < pattern.size() && pattern[p] == '*') {
            narrow = {++p, t, false};
        } else if (const auto taken = match_character(pattern.substr(p), text.substr(t)); taken.of_text) {
            p += taken.of_pattern;
            t += taken.of_text;
        } else if (narrow.in_pattern != none && text[narrow.in_text] != '/') {
            p = narrow.in_pattern;
            t = ++narrow.in_text;
        } else if (wide.in_pattern != none) {
            const auto slash = wide.by_folder ? text.find('/', wide.in_text) : wide.in_text;
            if (slash == none)
                return false;
            p = wide.in_pattern;
            t = wide.in_text = slash + 1;
            narrow = {};
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == none;
}

pattern_set::pattern_set(std::vector<std::string> wanted, bool ignore_case)
    : given(std::move(wanted)), patterns(given), used(given.size()), ignores_case(ignore_case) {
    for (auto& pattern : patterns) {
        while (pattern.size() > 1 && pattern.back() == '/')
            pattern.pop_back();
        if (ignore_case)
            pattern = lower_case(pattern);
    }
    for (std::size_t i = 0; i < patterns.size(); ++i)
        enter(patterns[i].find('/') == none ? for_names : for_paths, i);
}

void pattern_set::enter(candidates& into, std::size_t number) const {
    const std::string_view pattern = patterns[number];
    const auto first = pattern.find_first_of(wildcards);
    const auto last = pattern.find_last_of("*?]");
    // What "**/" at the start takes may be nothing, its slash included.
    const auto end = last == 1 && pattern.substr(0, 3) == "**/" ? 3 : last == none ? none : last + 1;
    if (first == none)
        into.whole[pattern].push_back(number);
    else if (first > 0)
        into.beginning[first][pattern.substr(0, first)].push_back(number);
    else if (end < pattern.size() && pattern.find('[', end) == none)
        into.end[pattern.size() - end][pattern.substr(end)].push_back(number);
    else
        into.others.push_back(number);
}

bool pattern_set::match_in(const candidates& among, std::string_view text) {
    bool matched = false;
    const auto accept = [&](std::size_t number) {
        used[number] = true;
        matched = true;
    };
    const auto try_all = [&](const std::vector<std::size_t>& numbers) {
        for (const auto number : numbers)
            if (matches(patterns[number], text))
                accept(number);
    };
    if (const auto found = among.whole.find(text); found != among.whole.end())
        std::for_each(found->second.begin(), found->second.end(), accept);
    for (const auto& [length, literals] : among.beginning)
        if (length <= text.size())
            if (const auto found = literals.find(text.substr(0, length)); found != literals.end())
                try_all(found->second);
    for (const auto& [length, literals] : among.end)
        if (length <= text.size())
            if (const auto found = literals.find(text.substr(text.size() - length)); found != literals.end())
                try_all(found->second);
    try_all(among.others);
    return matched;
}

bool pattern_set::match(std::string_view path) {
    if (empty())
        return false;
    std::string lower;
    if (ignores_case)
        path = lower = lower_case(path);
    bool matched = false;
    for_each_name(path, [&](std::size_t start, std::size_t end) {
        matched = match_in(for_names, path.substr(start, end - start)) || matched;
        matched = match_in(for_paths, path.substr(0, end)) || matched;
    });
    return matched;
}

std::vector<std::string> pattern_set::unused() const {
    std::vector<std::string> never;
    for (std::size_t i = 0; i < given.size(); ++i)
        if (!used[i])
            never.push_back(given[i]);
    return never;
}

std::string pattern_set::used_marks() const {
    std::string marks;
    for (const bool each : used)
        marks += each ? '1' : '0';
    return marks;
}

void pattern_set::add_used(std::string_view marks) {
    for (std::size_t i = 0; i < marks.size() && i < used.size(); ++i)
        used[i] = used[i] || marks[i] == '1';
}

bool selection::wants(std::string_view path) {
    const bool wanted = only.empty() || only.match(path);
    return wanted && !exclude.match(path);
}

} // namespace host

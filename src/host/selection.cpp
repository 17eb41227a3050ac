#include "host/selection.h"

#include <algorithm>

namespace host {

namespace {

/// Whether `pattern` names the file `path`, or a folder on the way to it.
bool names(std::string_view pattern, std::string_view path) {
    const bool whole_paths = pattern.find('/') != pattern.npos;
    for (std::size_t start = 0, end; start < path.size(); start = end + 1) {
        end = std::min(path.find('/', start), path.size());
        if (matches(pattern, whole_paths ? path.substr(0, end) : path.substr(start, end - start)))
            return true;
    }
    return false;
}

} // namespace

bool matches(std::string_view pattern, std::string_view text) {
    // On a mismatch only the last star of each kind can take more, which bounds the work: '*' goes on between
    // two slashes, and '**' steps on by one character each time.
    struct star {
        std::size_t in_pattern = std::string_view::npos;
        std::size_t in_text = 0;
    } narrow, wide;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size()) {
        if (pattern.substr(p, 2) == "**") {
            p += 2;
            wide = {p, t};
            narrow = {};
        } else if (p < pattern.size() && pattern[p] == '*') {
            narrow = {++p, t};
        } else if (p < pattern.size() && (pattern[p] == text[t] || (pattern[p] == '?' && text[t] != '/'))) {
            ++p;
            ++t;
        } else if (narrow.in_pattern != std::string_view::npos && text[narrow.in_text] != '/') {
            p = narrow.in_pattern;
            t = ++narrow.in_text;
        } else if (wide.in_pattern != std::string_view::npos) {
            p = wide.in_pattern;
            t = ++wide.in_text;
            narrow = {};
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', p) == pattern.npos;
}

selection::selection(std::vector<std::string> wanted) : patterns(std::move(wanted)), used(patterns.size()) {
    for (auto& pattern : patterns)
        while (pattern.size() > 1 && pattern.back() == '/')
            pattern.pop_back();
}

bool selection::wants(std::string_view path) {
    bool wanted = everything();
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        if (names(patterns[i], path)) {
            used[i] = true;
            wanted = true;
        }
    }
    return wanted;
}

std::vector<std::string> selection::take_unused() {
    std::vector<std::string> unused;
    for (std::size_t i = 0; i < patterns.size(); ++i)
        if (!used[i])
            unused.push_back(patterns[i]);
    used.assign(patterns.size(), false);
    return unused;
}

} // namespace host

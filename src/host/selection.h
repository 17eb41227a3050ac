#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host {

/// Patterns for paths, and which of them matched. In a pattern '*' matches any characters but '/', '?' one
/// but
/// '/', "[a-z]" and "[!a-z]" one of a set, '**' any characters at all, and "**/" any folders or none. A
/// pattern without '/' is compared with each name of a path, one with '/' with its beginnings from the top;
/// either also takes all files in a folder that it matches. The cost of a path depends little on the number
/// of patterns, as only those are tried that have a literal beginning or end in common with it.
class pattern_set {
public:
    pattern_set() = default;
    pattern_set(pattern_set&&) = default;
    pattern_set& operator=(pattern_set&&) = default;
    pattern_set(std::vector<std::string> patterns, bool ignore_case);

    bool empty() const { return patterns.empty(); }
    /// Whether a pattern matches `path`.
    bool match(std::string_view path);
    /// The patterns that never matched, as they were given.
    std::vector<std::string> unused() const;
    /// Which patterns have matched, one character '0' or '1' for each.
    std::string used_marks() const;
    /// Adds what used_marks() of an equal set returned.
    void add_used(std::string_view marks);

private:
    /// Patterns by their literal part: all of them, their beginning or their end.
    using by_literal = std::unordered_map<std::string_view, std::vector<std::size_t>>;
    struct candidates {
        by_literal whole;
        std::unordered_map<std::size_t, by_literal> beginning; ///< by the length of the literal part
        std::unordered_map<std::size_t, by_literal> end;
        std::vector<std::size_t> others;
    };
    void enter(candidates& into, std::size_t number) const;
    bool match_in(const candidates& among, std::string_view text);

    std::vector<std::string> given;
    std::vector<std::string> patterns; ///< ready for comparison; not changed, as views of them are kept
    std::vector<bool> used;
    bool ignores_case = false;
    candidates for_names;
    candidates for_paths;
};

/// Which files of an archive are wanted: those that `only` matches, or all if it is empty, without those that
/// `exclude` matches.
struct selection {
    pattern_set only;
    pattern_set exclude;

    bool everything() const { return only.empty() && exclude.empty(); }
    /// Whether `path` is wanted; also remembers which patterns matched.
    bool wants(std::string_view path);
};

/// Whether all of `text` fits `pattern`.
bool matches(std::string_view pattern, std::string_view text);

/// `utf8` in lower case, as far as the system knows the letters.
std::string lower_case(std::string_view utf8);

} // namespace host

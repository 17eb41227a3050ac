#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// Which files of an archive are wanted: all, or those that a pattern names. In a pattern '*' matches any
/// characters but '/', '**' any at all, '?' one but '/'. A pattern without '/' is compared with a
/// file's own name, one with '/' with its whole path; either also takes all files in a folder that it names.
class selection {
public:
    selection() = default;
    explicit selection(std::vector<std::string> patterns);

    bool everything() const { return patterns.empty(); }
    /// Whether `path` is wanted; also remembers which patterns matched.
    bool wants(std::string_view path);
    /// The patterns that matched nothing since the last call.
    std::vector<std::string> take_unused();

private:
    std::vector<std::string> patterns;
    std::vector<bool> used;
};

/// Whether all of `text` fits `pattern`.
bool matches(std::string_view pattern, std::string_view text);

} // namespace host

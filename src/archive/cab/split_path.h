#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace harbor6::cab {

/// A path in normal form, cut into its components. Components of one or two dots vanish without climbing, so
/// that a path cannot lead above where it starts; doubled and trailing separators vanish, a leading one
/// stays. Names that begin with dots, or are three dots or more, stay whole. A text of n separators has n + 1
/// components, an empty one has none.
class split_path {
public:
    split_path(std::string_view path, char separator);

    /// Gives the components as text, in order.
    class iterator {
    public:
        iterator(const split_path& path, std::size_t index);

        std::string operator*() const;
        iterator& operator++();
        friend bool operator==(const iterator& a, const iterator& b) { return a.index == b.index; }

    private:
        const split_path* path;
        std::size_t index;
    };

    iterator begin() const;
    iterator end() const;

private:
    std::string normal;
    char separator;
    std::vector<std::size_t> offsets; ///< where the components begin
};

} // namespace harbor6::cab

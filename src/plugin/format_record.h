#pragma once

#include <cstdint>
#include <string_view>

namespace format {

/// What a recogniser knows of its format.
struct record {
    std::uint32_t number;
    std::string_view name;
    std::string_view suffix;
    char separator; ///< between the parts of a stored path
};

} // namespace format

namespace format::cab {

inline constexpr format::record record{35, "cab", ".cab", '\\'};

} // namespace format::cab

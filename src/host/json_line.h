#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

/// One JSON object on a line of its own. Text that is no UTF-8 gets replacement characters. docs/json.md
/// describes the objects that the program prints.
class json_line {
public:
    explicit json_line(std::string_view type) { add("type", type); }

    json_line& add(std::string_view name, std::string_view value);
    json_line& add(std::string_view name, const char* value) { return add(name, std::string_view(value)); }
    json_line& add(std::string_view name, std::uint64_t value);
    json_line& add(std::string_view name, bool value);
    json_line& add(std::string_view name, const std::vector<std::string>& values);

    /// The whole line.
    std::string text() const { return members + "}\n"; }

private:
    void begin(std::string_view name);

    std::string members = "{";
};

} // namespace host

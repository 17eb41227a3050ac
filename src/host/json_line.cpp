#include "host/json_line.h"

#include <nlohmann/json.hpp>

namespace host {

namespace {

std::string dumped(const nlohmann::json& value) {
    return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

} // namespace

void json_line::begin(std::string_view name) {
    if (members.size() > 1)
        members += ',';
    members += '"';
    members += name;
    members += "\":";
}

json_line& json_line::add(std::string_view name, std::string_view value) {
    begin(name);
    members += dumped(value);
    return *this;
}

json_line& json_line::add(std::string_view name, std::uint64_t value) {
    begin(name);
    members += std::to_string(value);
    return *this;
}

json_line& json_line::add(std::string_view name, bool value) {
    begin(name);
    members += value ? "true" : "false";
    return *this;
}

json_line& json_line::add(std::string_view name, const std::vector<std::string>& values) {
    begin(name);
    members += dumped(values);
    return *this;
}

} // namespace host

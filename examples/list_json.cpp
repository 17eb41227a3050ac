// Lists an archive from its head as JSON, one object a line: list_json ARCHIVE
#include <harbor6/harbor6.h>
#include <harbor6/posix/file_input.h>

#include <cstdio>
#include <iostream>

namespace {

std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
        const bool plain = static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\';
        result += plain ? std::string(1, c) : escape;
    }
    return result + '"';
}

struct to_json {
    std::string operator()(bool value) const { return value ? "true" : "false"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return quoted(value); }
    std::string operator()(const fs::time& value) const {
        return quoted(un::write(value.year, 10, 4) + '-' + un::write(value.month, 10, 2) + '-' +
                      un::write(value.day, 10, 2));
    }
};

} // namespace

int main(int count, char** arguments) {
    if (count != 2)
        return 2;
    try {
        harbor6::ClientInterface client;
        host::Registry formats(client);
        for (const auto& folder : host::Registry::standard_folders())
            formats.load(folder);
        auto bytes = std::make_unique<host::file_input>(host::open_input(arguments[1]), arguments[1]);
        const host::ArchiveReader archive(formats, std::move(bytes));
        for (const auto& entry : archive.entries()) {
            std::cout << "{\"path\": " << quoted(entry.path) << ", \"size\": " << entry.size;
            for (const auto& [key, value] : entry.attributes)
                std::cout << ", " << quoted(key) << ": " << std::visit(to_json(), value);
            std::cout << "}\n";
        }
        if (archive.head_failure())
            std::rethrow_exception(archive.head_failure());
        return 0;
    } catch (...) {
        std::cerr << nio::failure_text(std::current_exception()) << '\n';
        return 1;
    }
}

#include "harbor6/groundwork/text.h"
#include "host/commands.h"

#include <nlohmann/json.hpp>

namespace host {

namespace {

/// A column between size and path, for an attribute of the archive's items.
struct column {
    const char* key;
    const char* name; ///< in JSON, where a file without a value has no such member
    std::size_t width;
};

constexpr column columns[] = {
    {harbor6::key::modTime, "modified", 19},
};

/// As "2004-02-29 13:37:42", with `separator` between date and time.
std::string written(const fs::time& time, char separator) {
    const auto two = [](std::uint32_t value) { return un::write(value, 10, 2); };
    return un::write(time.year, 10, 4) + '-' + two(time.month) + '-' + two(time.day) + separator +
           two(time.hour) + ':' + two(time.minute) + ':' + two(time.second);
}

struct to_text {
    std::string operator()(bool value) const { return value ? "yes" : "no"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return nio::printable(value); }
    std::string operator()(const fs::time& value) const { return written(value, ' '); }
};

struct to_json {
    nlohmann::ordered_json operator()(const fs::time& value) const { return written(value, 'T'); }
    template<class T>
    nlohmann::ordered_json operator()(const T& value) const {
        return value;
    }
};

std::string padding(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ');
}

void print(console& out, const tally_entry& entry) {
    const auto size = un::write(entry.size, 10, 1);
    auto line = padding(size, 12) + size + "  ";
    for (const auto& column : columns) {
        const auto value = entry.attributes.find(column.key);
        const auto text =
            value == entry.attributes.end() ? std::string() : std::visit(to_text(), value->second);
        line += text + padding(text, column.width) + "  ";
    }
    out.print(line + nio::printable(entry.path) + '\n');
}

nlohmann::ordered_json as_json(const tally_entry& entry) {
    nlohmann::ordered_json object = {{"path", entry.path}, {"size", entry.size}};
    for (const auto& column : columns)
        if (const auto value = entry.attributes.find(column.key); value != entry.attributes.end())
            object[column.name] = std::visit(to_json(), value->second);
    return object;
}

/// Writes the listing of several archives as one JSON array, entry by entry.
class json_listing {
public:
    explicit json_listing(console& output) : out(output) {}

    void begin(const std::string& archive) {
        out.print(archives++ == 0 ? "[" : ",");
        out.print("\n  {\n    \"archive\": " + dumped(archive, {}) + ",\n    \"files\": [");
        files = 0;
    }
    void add(const tally_entry& entry) {
        const std::string indent = "\n      ";
        out.print((files++ == 0 ? "" : ",") + indent + dumped(as_json(entry), indent));
    }
    /// `complete` tells whether the archive had no error.
    void end(bool complete) {
        out.print(files == 0 ? "]" : "\n    ]");
        out.print(std::string(",\n    \"complete\": ") + (complete ? "true" : "false") + "\n  }");
    }
    void finish() { out.print("\n]\n"); }

private:
    /// With `indent` in place of each line break.
    static std::string dumped(const nlohmann::ordered_json& value, const std::string& indent) {
        const auto text = value.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
        std::string result;
        for (const char c : text)
            c == '\n' ? result += indent : result += c;
        return result;
    }

    console& out;
    std::size_t archives = 0;
    std::size_t files = 0; ///< of the current archive
};

} // namespace

void list(command_context& context) {
    const auto& chosen = context.chosen;
    auto& out = context.log.out;
    json_listing json(out);
    for (const auto& archive : chosen.archives) {
        context.log.begin_archive(archive);
        if (chosen.json)
            json.begin(archive);
        else if (chosen.archives.size() > 1)
            out.print(nio::printable(archive) + ":\n");
        tally counts{context.plain_format, context.log};
        for (const auto& column : columns)
            counts.keys.emplace_back(column.key);
        counts.counted = [&](const tally_entry& entry) {
            if (chosen.json)
                json.add(entry);
            else
                print(out, entry);
        };
        tally_archive(context, archive, counts);
        const bool sound = context.log.end_archive();
        if (chosen.json)
            json.end(sound);
    }
    if (chosen.json)
        json.finish();
}

} // namespace host

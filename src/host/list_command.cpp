#include "harbor6/groundwork/text.h"
#include "host/commands.h"
#include "host/tally.h"

#include <nlohmann/json.hpp>

namespace host {

namespace {

/// As "2004-02-29 13:37:42", with `between` day and hour.
std::string written(const fs::time& time, char between) {
    const auto two = [](std::uint32_t value) { return un::write(value, 10, 2); };
    return un::write(time.year, 10, 4) + '-' + two(time.month) + '-' + two(time.day) + between +
           two(time.hour) + ':' + two(time.minute) + ':' + two(time.second);
}

void print(console& screen, const tally_entry& entry) {
    const auto size = un::write(entry.size, 10, 1);
    const std::string margin(size.size() < 12 ? 12 - size.size() : 0, ' ');
    screen.print(margin + size + "  " +
                 (entry.modified ? written(*entry.modified, ' ') : std::string(19, ' ')) + "  " +
                 nio::printable(entry.path) + '\n');
}

nlohmann::ordered_json as_json(const tally_entry& entry) {
    nlohmann::ordered_json object = {{"path", entry.path}, {"size", entry.size}};
    if (entry.modified)
        object["modified"] = written(*entry.modified, 'T');
    return object;
}

} // namespace

void list(command_context& context) {
    auto all = nlohmann::ordered_json::array();
    auto& screen = context.log.screen;
    for (const auto& archive : context.chosen.archives) {
        context.log.begin(archive);
        std::vector<tally_entry> entries;
        tally counts{context.plain_format, context.log, &entries};
        const pattern::AcquiredPtr<TallyFolder> top(new TallyFolder(counts));
        run_pass(context.formats, context.plain_format, context.log, archive, *top);
        auto files = nlohmann::ordered_json::array();
        if (!context.chosen.json && context.chosen.archives.size() > 1)
            screen.print(nio::printable(archive) + ":\n");
        for (const auto& entry : entries) {
            if (context.chosen.json)
                files.push_back(as_json(entry));
            else
                print(screen, entry);
        }
        const bool sound = context.log.end();
        if (context.chosen.json)
            all.push_back({{"archive", archive}, {"complete", sound}, {"files", std::move(files)}});
    }
    if (context.chosen.json)
        screen.print(all.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n');
}

} // namespace host

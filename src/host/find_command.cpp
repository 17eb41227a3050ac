#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive_finder.h"
#include "harbor6/model/format.h"
#include "harbor6/posix/file_input.h"
#include "host/commands.h"
#include "host/json_line.h"

#include <utility>

namespace host {

namespace {

namespace key = harbor6::key;

std::string right_aligned(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

void print(command_context& context, const harbor6::FoundArchive& found) {
    const auto text = [&](const char* name) { return nio::printable(found.format->string(name)); };
    const bool sized = found.size != harbor6::FoundArchive::unknown_size;
    context.log.out.print(
        right_aligned(un::write(found.offset, 10, 1), 12) + "  " +
        right_aligned(sized ? un::write(found.size, 10, 1) : "?", 12) + "  " + text(key::formatName) +
        (context.chosen.verbose ? ": " + text(key::longName) + ", " + text(key::mimeType) : "") +
        (found.cut ? ", cut short\n" : "\n"));
}

void print_json(console& out, const std::string& file, const harbor6::FoundArchive& found) {
    json_line line("found");
    line.add("file", file).add("offset", found.offset);
    if (found.size != harbor6::FoundArchive::unknown_size)
        line.add("size", found.size);
    line.add("format", found.format->string(key::formatName)).add("cut", found.cut);
    out.print(line.text());
}

void find_in(command_context& context, const std::string& file) {
    const auto& chosen = context.chosen;
    auto& log = context.log;
    const auto bytes = archive_source{file}.open(&log.meter);
    log.meter.begin(file, bytes->size());
    harbor6::ArchiveFinder finder(context.formats.classifier, *bytes);
    harbor6::FoundArchive found;
    bool any = false;
    for (; finder.next(found); any = true) {
        if (chosen.json) {
            print_json(log.out, file, found);
            continue;
        }
        if (!any && !chosen.quiet)
            log.out.print(bold("      Offset          Size  Format", log.form.color_output) + '\n');
        print(context, found);
    }
    if (finder.passedOver())
        log.archive_error(too_many_heads);
    else if (!any)
        log.archive_error("no archive of a known format found");
}

} // namespace

void find(command_context& context) {
    const auto& chosen = context.chosen;
    const bool titled = !chosen.json && !chosen.quiet && chosen.archives.size() > 1;
    std::string before; // the title
    for (const auto& file : chosen.archives) {
        context.log.begin_archive(file);
        if (titled)
            context.log.out.print(std::exchange(before, "\n") + nio::printable(file) + ":\n");
        try {
            find_in(context, file);
        } catch (const fs::Exception& failure) {
            context.log.archive_error(nio::printable(failure.message()));
        }
        context.log.end_archive();
    }
}

} // namespace host

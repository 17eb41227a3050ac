#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive_finder.h"
#include "harbor6/model/format.h"
#include "harbor6/posix/file_input.h"
#include "host/commands.h"
#include "host/json_line.h"

namespace host {

namespace {

std::string right_aligned(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

void print(console& out, const harbor6::FoundArchive& found) {
    const bool sized = found.size != harbor6::FoundArchive::unknown_size;
    out.print(right_aligned(un::write(found.offset, 10, 1), 12) + "  " +
              right_aligned(sized ? un::write(found.size, 10, 1) : "?", 12) + "  " +
              nio::printable(found.format->string(harbor6::key::formatName)) +
              (found.cut ? ", cut short\n" : "\n"));
}

void print_json(console& out, const std::string& file, const harbor6::FoundArchive& found) {
    json_line line("found");
    line.add("file", file).add("offset", found.offset);
    if (found.size != harbor6::FoundArchive::unknown_size)
        line.add("size", found.size);
    line.add("format", found.format->string(harbor6::key::formatName)).add("cut", found.cut);
    out.print(line.text());
}

void find_in(command_context& context, const std::string& file) {
    file_input bytes(file == "-" ? open_standard_input() : open_input(file), "the file");
    harbor6::ArchiveFinder finder(context.formats.classifier, bytes);
    harbor6::FoundArchive found;
    bool any = false;
    for (; finder.next(found); any = true)
        if (context.chosen.json)
            print_json(context.log.out, file, found);
        else
            print(context.log.out, found);
    if (finder.passedOver())
        context.log.archive_error(too_many_heads);
    else if (!any)
        context.log.archive_error("no archive of a known format found");
}

} // namespace

void find(command_context& context) {
    for (const auto& file : context.chosen.archives) {
        context.log.begin_archive(file);
        if (!context.chosen.json && context.chosen.archives.size() > 1)
            context.log.out.print(nio::printable(file) + ":\n");
        try {
            find_in(context, file);
        } catch (const fs::Exception& failure) {
            context.log.archive_error(nio::printable(failure.message()));
        }
        context.log.end_archive();
    }
}

} // namespace host

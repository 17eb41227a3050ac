#include "host/command_line.h"

#include "harbor6/groundwork/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace host {

namespace {

constexpr char standard_input[] = "-";

/// What the options are made from.
struct parsed {
    options chosen;
    std::string first;
    std::vector<std::string> more;
    bool overwrite = false;
    bool keep = false;
};

void add_common(CLI::App& command, options& chosen) {
    command.add_option("--encoding", chosen.encoding, "Code page of the names, by its iconv name")
        ->type_name("NAME");
    command.add_option("--formats", chosen.formats, "Folder of format plug-ins")->type_name("DIR");
    command.add_flag("-v,--verbose", chosen.verbose, "Name each file that is done");
}

void finish_expand(parsed& from) {
    auto& chosen = from.chosen;
    chosen.to_run = options::command::expand;
    chosen.archives = {from.first};
    chosen.archives.insert(chosen.archives.end(), from.more.begin(), from.more.end());
    chosen.policy = from.overwrite ? clash_policy::overwrite
                    : from.keep    ? clash_policy::keep
                                   : clash_policy::refuse;
    const auto& names = chosen.archives;
    if (chosen.target.empty() && std::find(names.begin(), names.end(), standard_input) != names.end())
        throw CLI::ValidationError("the standard input has no name, so -C DIR is needed");
}

void add_expand(CLI::App& program, parsed& into) {
    auto& command = *program.add_subcommand("expand", "Bring the files of archives to the disk");
    command.add_option("archive", into.first, "The archive; - is the standard input")->required();
    command.add_option("names", into.chosen.patterns,
                       "Files or folders in it that are wanted, with * ** ? as wildcards; all by default");
    command.add_option("--and", into.more, "Another archive; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ARCHIVE");
    command
        .add_option("-C,--directory", into.chosen.target,
                    "Where the files go; by default a folder named after the archive, or beside it what is "
                    "alone in it")
        ->type_name("DIR");
    auto* const overwriting = command.add_flag("--overwrite", into.overwrite, "Replace files that exist");
    command.add_flag("--keep", into.keep, "Leave files that exist as they are, silently")
        ->excludes(overwriting);
    auto* const nesting =
        command.add_flag("--nested", into.chosen.nested, "Expand archives inside archives too")
            ->excludes(command.get_option("names"));
    command.add_option("--depth", into.chosen.depth, "How far down --nested goes; 16 by default")
        ->needs(nesting)
        ->check(CLI::Range(1, 1000))
        ->type_name("N");
    add_common(command, into.chosen);
    command.callback([&into] { finish_expand(into); });
}

void add_reading(CLI::App& program, options& chosen, const std::string& name, const std::string& purpose,
                 options::command meaning) {
    auto& command = *program.add_subcommand(name, purpose);
    command.add_option("archives", chosen.archives, "The archives; - is the standard input")->required();
    add_common(command, chosen);
    if (meaning == options::command::list)
        command.add_flag("--json", chosen.json, "List as JSON");
    command.callback([&chosen, meaning] { chosen.to_run = meaning; });
}

} // namespace

std::variant<options, exit_status> parse_command_line(int count, char** arguments) {
    parsed all;
    auto& chosen = all.chosen;
    CLI::App program("Opens archives of the formats that its plug-ins know.", "harbor");
    program.set_version_flag("--version", "harbor " HARBOR_VERSION);
    program.require_subcommand(1);
    program.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "harbor: " + nio::printable(error.what()) + "\nharbor --help says more.\n";
    });
    add_expand(program, all);
    add_reading(program, chosen, "list", "Show what archives hold", options::command::list);
    add_reading(program, chosen, "test", "Read archives whole, and keep nothing", options::command::test);
    auto& formats = *program.add_subcommand("formats", "Show which formats are known");
    formats.add_option("--formats", chosen.formats, "Folder of format plug-ins")->type_name("DIR");
    formats.callback([&chosen] { chosen.to_run = options::command::formats; });
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? exit_status::ok : exit_status::usage;
    }
    return chosen;
}

} // namespace host

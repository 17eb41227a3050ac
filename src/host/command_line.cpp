#include "host/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace host {

namespace {

constexpr char standard_input[] = "-";

void add_common(CLI::App& command, options& chosen) {
    command.add_option("--encoding", chosen.encoding, "Code page of the names, by its iconv name")
        ->type_name("NAME");
    command.add_option("--formats", chosen.formats, "Folder of format plug-ins")->type_name("DIR");
    command.add_flag("-v,--verbose", chosen.verbose, "Name each file that is done");
}

void add_expand(CLI::App& program, options& chosen) {
    auto& command = *program.add_subcommand("expand", "Bring the files of archives to the disk");
    static std::string first;
    static std::vector<std::string> more;
    command.add_option("archive", first, "The archive; - is the standard input")->required();
    command.add_option("names", chosen.patterns,
                       "Files or folders in it that are wanted, with * ** ? as wildcards; all by default");
    command.add_option("--and", more, "Another archive; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ARCHIVE");
    command
        .add_option("-C,--directory", chosen.target,
                    "Where the files go; a folder named after the archive by default")
        ->type_name("DIR");
    static bool overwrite;
    static bool keep;
    auto* const overwriting = command.add_flag("--overwrite", overwrite, "Replace files that exist");
    command.add_flag("--keep", keep, "Leave files that exist as they are, silently")->excludes(overwriting);
    add_common(command, chosen);
    command.callback([&chosen] {
        chosen.chosen = options::command::expand;
        chosen.archives = {first};
        chosen.archives.insert(chosen.archives.end(), more.begin(), more.end());
        if (overwrite)
            chosen.policy = clash_policy::overwrite;
        if (keep)
            chosen.policy = clash_policy::keep;
        const auto& names = chosen.archives;
        if (chosen.target.empty() && std::find(names.begin(), names.end(), standard_input) != names.end())
            throw CLI::ValidationError("the standard input has no name, so -C DIR is needed");
    });
}

void add_reading(CLI::App& program, options& chosen, const std::string& name, const std::string& purpose,
                 options::command meaning) {
    auto& command = *program.add_subcommand(name, purpose);
    command.add_option("archives", chosen.archives, "The archives; - is the standard input")->required();
    add_common(command, chosen);
    if (meaning == options::command::list)
        command.add_flag("--json", chosen.json, "List as JSON");
    command.callback([&chosen, meaning] { chosen.chosen = meaning; });
}

} // namespace

std::variant<options, exit_status> parse_command_line(int count, char** arguments) {
    options chosen;
    CLI::App program("Opens archives of the formats that its plug-ins know.", "harbor");
    program.set_version_flag("--version", "harbor " HARBOR_VERSION);
    program.require_subcommand(1);
    add_expand(program, chosen);
    add_reading(program, chosen, "list", "Show what archives hold", options::command::list);
    add_reading(program, chosen, "test", "Read archives whole, and keep nothing", options::command::test);
    auto& formats = *program.add_subcommand("formats", "Show which formats are known");
    formats.add_option("--formats", chosen.formats, "Folder of format plug-ins")->type_name("DIR");
    formats.callback([&chosen] { chosen.chosen = options::command::formats; });
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? exit_status::ok : exit_status::usage;
    }
    return chosen;
}

} // namespace host

#include "host/command_line.h"

#include "harbor6/groundwork/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace host {

namespace {

constexpr char standard_input[] = "-";

/// The options, and the archives of `expand` as they are given.
struct parsed {
    options chosen;
    std::string first;
    std::vector<std::string> more;
};

struct clash_option {
    const char* flag;
    const char* help;
    clash_policy policy;
};

constexpr clash_option clash_options[] = {
    {"--overwrite", "Replace existing files", clash_policy::overwrite},
    {"--keep", "Keep existing files, without an error", clash_policy::keep},
};

/// At most one of the flags can be given.
void add_clash_options(CLI::App& command, options& chosen) {
    std::vector<CLI::Option*> added;
    for (const auto& [flag, help, policy] : clash_options) {
        auto* const option = command.add_flag_callback(
            flag, [&chosen, policy = policy] { chosen.policy = policy; }, help);
        for (auto* const other : added)
            option->excludes(other);
        added.push_back(option);
    }
}

void add_common(CLI::App& command, options& chosen) {
    command
        .add_option("--encoding", chosen.encoding, "Code page of the names in archives, by its iconv name")
        ->type_name("NAME");
    command.add_option("--formats", chosen.formats, "Folder of format plug-ins")->type_name("DIR");
}

void add_verbose(CLI::App& command, options& chosen) {
    command.add_flag("-v,--verbose", chosen.verbose, "Print the name of each file when it is complete");
}

void finish_expand(parsed& from) {
    auto& chosen = from.chosen;
    chosen.to_run = options::command::expand;
    chosen.archives = {from.first};
    chosen.archives.insert(chosen.archives.end(), from.more.begin(), from.more.end());
    const auto& names = chosen.archives;
    if (chosen.target.empty() && std::find(names.begin(), names.end(), standard_input) != names.end())
        throw CLI::ValidationError("the standard input has no name, so -C DIR is needed");
}

void add_expand(CLI::App& program, parsed& into) {
    auto& command = *program.add_subcommand("expand", "Write the files of archives to disk");
    command.add_option("archive", into.first, "The archive; - is the standard input")->required();
    command.add_option("names", into.chosen.patterns,
                       "Files or folders in it to expand, with * ** ? as wildcards; all by default");
    command.add_option("--and", into.more, "Another archive; may be repeated")
        ->allow_extra_args(false)
        ->type_name("ARCHIVE");
    command
        .add_option(
            "-C,--directory", into.chosen.target,
            "Target folder; by default one named after the archive, or none if the archive has a single "
            "item at its top")
        ->type_name("DIR");
    add_clash_options(command, into.chosen);
    command.add_flag("--sync", into.chosen.sync,
                     "End only when all files are on the disk, so that they survive a crash of the machine");
    auto* const nesting =
        command.add_flag("--nested", into.chosen.nested, "Expand archives inside archives too")
            ->excludes(command.get_option("names"));
    command.add_option("--depth", into.chosen.depth, "How many levels --nested expands; 16 by default")
        ->needs(nesting)
        ->check(CLI::Range(1, 1000))
        ->type_name("N");
    command
        .add_flag_callback(
            "--no-limits", [&into] { into.chosen.limited = false; },
            "Let --nested expand archives to any size and number of items")
        ->needs(nesting);
    add_common(command, into.chosen);
    add_verbose(command, into.chosen);
    command.callback([&into] { finish_expand(into); });
}

void add_reading(CLI::App& program, options& chosen, const std::string& name, const std::string& purpose,
                 options::command meaning) {
    auto& command = *program.add_subcommand(name, purpose);
    command.add_option("archives", chosen.archives, "The archives; - is the standard input")->required();
    add_common(command, chosen);
    if (meaning == options::command::list)
        command.add_flag("--json", chosen.json, "List as JSON");
    else
        add_verbose(command, chosen);
    command.callback([&chosen, meaning] { chosen.to_run = meaning; });
}

} // namespace

std::variant<options, exit_status> parse_command_line(int count, char** arguments) {
    parsed all;
    auto& chosen = all.chosen;
    CLI::App program("Expands, lists and tests archives. Plug-ins provide the formats.", "harbor");
    program.set_version_flag("--version", "harbor " HARBOR_VERSION);
    program.require_subcommand(1);
    program.failure_message([](const CLI::App*, const CLI::Error& error) {
        return "harbor: " + nio::printable(error.what()) + "\nSee harbor --help.\n";
    });
    add_expand(program, all);
    add_reading(program, chosen, "list", "List size, time and path of the files of archives",
                options::command::list);
    add_reading(program, chosen, "test", "Read archives completely, test checksums and names, write nothing",
                options::command::test);
    auto& formats = *program.add_subcommand("formats", "List the available formats");
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

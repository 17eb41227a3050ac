#include "host/command_line.h"

#include "harbor6/groundwork/text.h"
#include "host/command_words.h"
#include "host/help_format.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <utility>

namespace host {

namespace {

constexpr char standard_input[] = "-";

constexpr char general_help[] =
    "Examples:\n"
    "  harbor x.cab                         shows what is in x.cab\n"
    "  harbor expand x.cab                  writes its files into the folder x\n"
    "  harbor expand x.cab -C out           writes them into the folder out\n"
    "  harbor expand x.cab -- '*.dll' docs  writes only these files and folders\n"
    "  harbor test *.cab                    says what is damaged\n"
    "\n"
    "x, l and t are short for expand, list and test. \"harbor COMMAND --help\" shows\n"
    "the options of a command.\n"
    "\n"
    "Exit status: 0 all is well; 1 something was damaged, refused or kept back;\n"
    "2 the command line is wrong.\n";

constexpr char pattern_help[] =
    "GLOB: * matches anything but /, ? one character, [a-z] one of a set, ** all,\n"
    "**/ any folders or none. Without a / it is compared with the names of files and\n"
    "folders, with one with the path from the top; a folder takes all files in it.\n"
    "@FILE reads patterns from a file, one a line.\n";

constexpr char expand_help[] = "Examples:\n"
                               "  harbor expand x.cab                     into the folder x\n"
                               "  harbor expand x.cab -C out -- '*.txt'   only text files, into out\n"
                               "  harbor expand *.cab --exclude '*.pdb'   each into its own folder\n"
                               "  harbor expand x.cab --overwrite newer   replaces older files\n"
                               "  curl -s URL | harbor expand - -C out    from a pipe\n";

constexpr char list_help[] = "Examples:\n"
                             "  harbor list x.cab              size, time, attributes and name\n"
                             "  harbor list --tree x.cab       as a tree of folders\n"
                             "  harbor list --json x.cab       one JSON object a line\n"
                             "  harbor list x.cab -- '*.dll'   only these files\n"
                             "Only the head of an archive is read; --check also reads the files' data.\n"
                             "Attributes: r read-only, h hidden, s system, a archive, x executable.\n";

constexpr char test_help[] = "Examples:\n"
                             "  harbor test *.cab              reads everything, writes nothing\n"
                             "  harbor test --sha256 x.cab     a digest of each file\n";

constexpr char find_help[] =
    "Examples:\n"
    "  harbor find setup.exe          offset, size and format of each archive in it\n";

/// A command and what its help says.
struct command_text {
    options::command meaning;
    const char* purpose;
    const char* examples;
};

constexpr char selecting[] = "Choosing files";
constexpr char writing[] = "Writing files";
constexpr char nesting[] = "Archives inside archives";
constexpr char showing[] = "Output";
constexpr char reading[] = "Reading archives";

/// An option that takes one value, as often as it is given.
CLI::Option* add_list(CLI::App& command, const std::string& flag, std::vector<std::string>& values,
                      const std::string& help) {
    return command.add_option(flag, values, help)->allow_extra_args(false);
}

/// An option whose value is one of several words.
template<class T>
CLI::Option* add_choice(CLI::App& command, const std::string& flag, T& value,
                        const std::vector<std::pair<std::string, T>>& choices, const std::string& help) {
    return command
        .add_option_function<std::string>(
            flag,
            [&value, choices, flag](const std::string& given) {
                std::string known;
                for (const auto& [word, meaning] : choices) {
                    if (given == word) {
                        value = meaning;
                        return;
                    }
                    known += (known.empty() ? "" : ", ") + word;
                }
                throw CLI::ValidationError(flag, given + " is none of " + known);
            },
            help)
        ->type_name("WHEN");
}

void add_reading(CLI::App& command, options& chosen) {
    command.add_option("--formats", chosen.formats, "Folder of further format plug-ins")
        ->type_name("DIR")
        ->group(reading);
    command
        .add_flag("!--no-sandbox", chosen.confined,
                  "Keep the rights that reading archives does not need: to other files, programs, sockets")
        ->group(reading);
}

void add_common(CLI::App& command, options& chosen) {
    command.add_option("archives", chosen.archives, "The archives; - is the standard input")
        ->required()
        ->type_name("CABINET...");
    add_list(command, "--only", chosen.only, "Take only files that match; the same as GLOB behind --")
        ->type_name("GLOB")
        ->group(selecting);
    add_list(command, "--exclude", chosen.exclude, "Leave out files that match")
        ->type_name("GLOB")
        ->group(selecting);
    command.add_flag("--ignore-case", chosen.ignore_case, "Patterns match capital and small letters alike")
        ->group(selecting);
    command
        .add_option("--encoding", chosen.encoding,
                    "Code page of names that are not marked as UTF-8, by its iconv name")
        ->type_name("NAME")
        ->group(reading);
    add_reading(command, chosen);
    command.add_flag("--json", chosen.json, "Print one JSON object a line")->group(showing);
    auto* const quiet = command.add_flag("-q,--quiet", chosen.quiet, "Print errors only");
    quiet->group(showing);
    add_choice<color_choice>(
        command, "--color", chosen.color,
        {{"auto", color_choice::automatic}, {"never", color_choice::never}, {"always", color_choice::always}},
        "auto (by default: colors on a terminal, unless NO_COLOR is set), never, always")
        ->group(showing);
}

void add_work(CLI::App& command, options& chosen) {
    command.add_flag("-v,--verbose", chosen.verbose, "Print the name of each file, and what happens to it")
        ->excludes(command.get_option("--quiet"))
        ->group(showing);
    command.add_option("-j,--jobs", chosen.jobs, "Work on N archives at a time; by default one a processor")
        ->check(CLI::Range(1, 256))
        ->type_name("N")
        ->group(reading);
}

void add_expand(CLI::App& command, options& chosen) {
    command
        .add_option("-C,--directory", chosen.target,
                    "Write into the folder DIR (several archives: each into a folder of its own in it)")
        ->type_name("DIR")
        ->group(writing);
    add_choice<clash_policy>(
        command, "--overwrite", chosen.policy,
        {{"ask", clash_policy::ask},
         {"never", clash_policy::never},
         {"always", clash_policy::always},
         {"rename", clash_policy::rename},
         {"newer", clash_policy::newer}},
        "What happens to existing files: ask (by default; without a terminal they are kept, with status 1), "
        "never, always, rename (the new one becomes \"name (2).txt\"), newer")
        ->type_name("WHEN")
        ->group(writing);
    auto* const lower = command.add_flag("--lower", chosen.lower, "Write all names in lower case");
    auto* const flat = command.add_flag("--flat", chosen.flat, "Write all files into one folder");
    auto* const strip =
        command.add_option("--strip", chosen.strip, "Leave out the first N folders of each path")
            ->check(CLI::Range(0, 1000))
            ->type_name("N")
            ->excludes(flat);
    auto* const keep =
        command.add_flag("--keep-broken", chosen.keep_broken,
                         "Keep what came of an incomplete file, as NAME.partial; by default nothing is left");
    command
        .add_flag("--ignore-checksums", chosen.ignore_checksums,
                  "Keep data whose checksum is wrong; the files that have such data are named")
        ->group(writing);
    auto* const no_times = command.add_flag_callback(
        "--no-mtime", [&chosen] { chosen.times = false; }, "Do not set times");
    auto* const no_attributes = command.add_flag_callback(
        "--no-attributes", [&chosen] { chosen.attributes = false; },
        "Do not make files read-only or executable as the archive says");
    auto* const dry_run = command.add_flag("-n,--dry-run", chosen.dry_run,
                                           "Write nothing, only show what would be written where");
    auto* const to_stdout =
        command.add_flag("--stdout", chosen.to_stdout, "Write the bytes of the files to the standard output");
    for (auto* const option : {lower, flat, strip, keep, no_times, no_attributes, dry_run})
        option->excludes(to_stdout)->group(writing);
    to_stdout->excludes(command.get_option("--directory"))
        ->excludes(command.get_option("--json"))
        ->excludes(command.get_option("--verbose"))
        ->group(writing);
    command
        .add_flag("--sync", chosen.sync,
                  "End only when all files are on the disk, so that they survive a crash of the machine")
        ->group(writing);
    auto* const nested =
        command.add_flag("--nested", chosen.nested, "Expand archives inside archives too")->group(nesting);
    for (auto* const option : {flat, strip, dry_run, to_stdout})
        option->excludes(nested);
    command.add_option("--depth", chosen.depth, "How many levels of them; 16 by default")
        ->needs(nested)
        ->check(CLI::Range(1, 1000))
        ->type_name("N")
        ->group(nesting);
    command
        .add_flag_callback(
            "--no-limits", [&chosen] { chosen.limited = false; },
            "Let them expand to any size and number of items")
        ->needs(nested)
        ->group(nesting);
}

void add_list(CLI::App& command, options& chosen) {
    auto* const json = command.get_option("--json");
    command
        .add_flag("-v,--long,--verbose", chosen.long_format,
                  "Add compression method, cabinet folder and place in it")
        ->group(showing);
    command.add_flag("-h,--human", chosen.human_sizes, "Sizes such as 3.4 MB")->group(showing);
    command.add_flag("--tree", chosen.tree, "Show the folders as a tree")->excludes(json)->group(showing);
    command.add_flag("--check", chosen.check, "Read and test the files' data too")->group(reading);
}

void add_find(CLI::App& command, options& chosen) {
    command.add_option("files", chosen.archives, "The files; - is the standard input")
        ->required()
        ->type_name("FILE...");
    command.add_flag("--json", chosen.json, "Print one JSON object a line")->group(showing);
}

CLI::App& add_command(CLI::App& program, options& chosen, const command_word& word,
                      const command_text& text) {
    auto& command = *program.add_subcommand(word.name, text.purpose);
    if (word.short_form)
        command.alias(word.short_form);
    // In a list -h is asked for as a form of sizes.
    command.set_help_flag(text.meaning == options::command::list ? "--help" : "-h,--help",
                          "Print this help and exit");
    command.get_help_ptr()->group(showing);
    command.callback([&chosen, meaning = text.meaning] { chosen.to_run = meaning; });
    command.footer(std::string(text.examples));
    return command;
}

/// Reads the patterns of a file, one a line.
void read_patterns(const std::string& path, std::vector<std::string>& patterns) {
    std::ifstream file;
    if (path != standard_input)
        file.open(path);
    std::istream& lines = path == standard_input ? std::cin : file;
    std::error_code error;
    if (!lines || std::filesystem::is_directory(path, error))
        throw CLI::ValidationError("cannot read patterns from " + path);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (!line.empty())
            patterns.push_back(line);
    }
}

/// Puts the lines of each file @FILE in its place.
void read_pattern_files(std::vector<std::string>& patterns) {
    std::vector<std::string> all;
    for (auto& pattern : patterns)
        if (pattern.size() > 1 && pattern.front() == '@')
            read_patterns(pattern.substr(1), all);
        else
            all.push_back(std::move(pattern));
    patterns = std::move(all);
}

bool is_on_disk(const std::string& path) {
    std::error_code error;
    return path == standard_input || std::filesystem::exists(path, error) || error;
}

/// What parsing one option at a time doesn't see. Raises CLI::ValidationError.
void finish(options& chosen) {
    const auto& archives = chosen.archives;
    const auto stdin_used = std::count(archives.begin(), archives.end(), standard_input);
    if (stdin_used > 1)
        throw CLI::ValidationError("the standard input can be read only once");
    if (chosen.to_run == options::command::expand) {
        if (chosen.target.empty() && stdin_used > 0 && !chosen.to_stdout)
            throw CLI::ValidationError("the standard input has no name, so -C DIR is needed");
        if (chosen.nested && (!chosen.only.empty() || !chosen.exclude.empty()))
            throw CLI::ValidationError("--nested expands all files, so it takes no patterns");
        // A name of a file in the archive, without -- in front, would expand all of the archive.
        for (std::size_t i = 1; i < archives.size(); ++i)
            if (!is_on_disk(archives[i]))
                throw CLI::ValidationError(missing_archive_text(archives[0], archives[i]));
    }
    read_pattern_files(chosen.only);
    read_pattern_files(chosen.exclude);
}

/// The arguments as CLI11 takes them, and what stands behind "--".
struct divided_arguments {
    std::vector<std::string> front; ///< in reverse order
    std::vector<std::string> patterns;
    bool bare = false; ///< an archive took the place of the command
};

divided_arguments divide(int count, char** arguments) {
    divided_arguments result;
    int end = 1;
    while (end < count && std::string_view(arguments[end]) != "--")
        ++end;
    if (end < count)
        result.patterns.assign(arguments + end + 1, arguments + count);
    result.front.assign(arguments + std::min(1, count), arguments + end);
    if (result.front.empty())
        return result;
    if (result.front.front() == "help")
        result.front.front() = "--help";
    const auto& first = result.front.front();
    result.bare = (first == standard_input || first[0] != '-') && !find_command(first);
    if (result.bare && !is_on_disk(first))
        throw CLI::ValidationError(unknown_command_text(first));
    if (result.bare)
        result.front.insert(result.front.begin(), "list");
    std::reverse(result.front.begin(), result.front.end());
    return result;
}

} // namespace

std::variant<options, exit_status> parse_command_line(int count, char** arguments) {
    options chosen;
    CLI::App program("Shows, tests and expands Microsoft Cabinet files.", "harbor");
    program.set_version_flag("--version", "harbor " HARBOR_VERSION, "Print the version and exit");
    program.require_subcommand(1);
    program.set_help_flag("-h,--help", "Print this help and exit");
    program.footer(general_help);
    program.formatter(std::make_shared<help_format>());
    program.failure_message([](const CLI::App* failed, const CLI::Error& error) {
        const auto given = failed->get_subcommands();
        const auto command = given.empty() ? std::string() : ' ' + given.front()->get_name();
        const bool lacks = error.get_name() == "RequiredError";
        const auto text = !lacks          ? nio::printable(error.what())
                          : given.empty() ? "no command is given"
                                          : "no archive or file is named";
        return "harbor: " + text + "\nSee harbor" + command + " --help.\n";
    });
    const command_text texts[] = {
        {options::command::expand, "Write the files of archives to disk", expand_help},
        {options::command::list, "Show what archives contain", list_help},
        {options::command::test, "Read archives completely, test checksums and names", test_help},
        {options::command::find, "Find archives anywhere inside files", find_help},
        {options::command::formats, "Show the formats that the plug-ins provide", ""},
    };
    for (const auto& text : texts) {
        auto& command = add_command(program, chosen, word_of(text.meaning), text);
        if (text.meaning == options::command::formats || text.meaning == options::command::find) {
            add_reading(command, chosen);
            if (text.meaning == options::command::find)
                add_find(command, chosen);
            continue;
        }
        command.footer(std::string(text.examples) + '\n' + pattern_help);
        add_common(command, chosen);
        if (text.meaning == options::command::list)
            add_list(command, chosen);
        if (text.meaning != options::command::list)
            add_work(command, chosen);
        if (text.meaning == options::command::expand)
            add_expand(command, chosen);
        if (text.meaning == options::command::test)
            command
                .add_flag("--sha256", chosen.sha256,
                          "Print the digest of each file, as \"sha256sum -c\" reads them")
                ->group(showing);
    }
    try {
        auto divided = divide(count, arguments);
        if (divided.front.empty()) {
            std::cerr << program.help();
            return exit_status::usage;
        }
        chosen.bare = divided.bare;
        program.parse(divided.front);
        chosen.only.insert(chosen.only.end(), divided.patterns.begin(), divided.patterns.end());
        finish(chosen);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? exit_status::ok : exit_status::usage;
    }
    return chosen;
}

} // namespace host

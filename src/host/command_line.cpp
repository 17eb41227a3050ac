#include "host/command_line.h"

#include "harbor6/groundwork/text.h"
#include "host/command_words.h"
#include "host/help_format.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
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
    const char* quiet;
    const char* verbose;
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

/// An option whose value is a number from `least` to `most`.
CLI::Option* add_number(CLI::App& command, const std::string& flag, unsigned& value, unsigned least,
                        unsigned most, const std::string& help) {
    const auto range = "from " + std::to_string(least) + " to " + std::to_string(most);
    return command
        .add_option_function<std::string>(
            flag,
            [&value, flag, least, most, range](const std::string& given) {
                const auto end = given.data() + given.size();
                const auto [rest, error] = std::from_chars(given.data(), end, value);
                if (error != std::errc() || rest != end || value < least || value > most)
                    throw CLI::ValidationError(flag.substr(flag.find("--")),
                                               given + " is no number " + range);
            },
            help + "; N is " + range)
        ->type_name("N");
}

/// What every command has.
void add_general(CLI::App& command, options& chosen, const command_text& text) {
    command.add_option("--formats", chosen.formats, "Folder of further format plug-ins")
        ->type_name("DIR")
        ->group(reading);
    command
        .add_flag_callback(
            "--no-sandbox", [&chosen] { chosen.confined = false; },
            "Keep the rights that reading archives does not need: to other files, programs, sockets")
        ->group(reading);
    command.add_flag("--json", chosen.json, "Print one JSON object a line")->group(showing);
    command.add_flag("-q,--quiet", chosen.quiet, text.quiet)->group(showing);
    const bool lists = text.meaning == options::command::list;
    command.add_flag(lists ? "-v,--long,--verbose" : "-v,--verbose", chosen.verbose, text.verbose)
        ->group(showing);
    add_choice<color_choice>(
        command, "--color", chosen.color,
        {{"auto", color_choice::automatic}, {"never", color_choice::never}, {"always", color_choice::always}},
        "auto (by default: colors on a terminal, unless NO_COLOR is set), never, always")
        ->group(showing);
}

void add_common(CLI::App& command, options& chosen) {
    command.add_option("archives", chosen.archives, "The archives; - is the standard input")
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
}

void add_work(CLI::App& command, options& chosen) {
    command.get_option("--verbose")->excludes(command.get_option("--quiet"));
    add_number(command, "-j,--jobs", chosen.jobs, 1, 256,
               "Work on N archives at a time; by default one a processor")
        ->group(reading);
}

void add_expand(CLI::App& command, options& chosen) {
    command
        .add_option("-C,--directory", chosen.target,
                    "Write into the folder DIR (several archives: each into a folder of its own in it)")
        ->check([](const std::string& folder) {
            return folder.empty() ? std::string("the name of the folder is empty") : std::string();
        })
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
        add_number(command, "--strip", chosen.strip, 0, 1000, "Leave out the first N folders of each path")
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
    add_number(command, "--depth", chosen.depth, 1, 1000, "How many levels of them; 16 by default")
        ->needs(nested)
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
    command.add_flag("-h,--human", chosen.human_sizes, "Sizes such as 3.4 MB")->group(showing);
    command.add_flag("--tree", chosen.tree, "Show the folders as a tree")
        ->excludes(json)
        ->excludes(command.get_option("--verbose"))
        ->group(showing);
    command.add_flag("--check", chosen.check, "Read and test the files' data too")->group(reading);
}

void add_find(CLI::App& command, options& chosen) {
    command.add_option("files", chosen.archives, "The files; - is the standard input")->type_name("FILE...");
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
    if (archives.empty() && chosen.to_run == options::command::list && chosen.human_sizes)
        throw CLI::CallForHelp();
    if (archives.empty() && chosen.to_run != options::command::formats)
        throw CLI::ValidationError("no archive or file is named");
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

/// What is wrong with the option `argument`, which `command` doesn't have.
std::string unknown_option_text(const CLI::App& program, const CLI::App& command,
                                const std::string& argument) {
    const auto name = argument.substr(0, argument.starts_with("--") ? argument.find('=') : 2);
    if (is_on_disk(argument))
        return argument + ": no such option; the file of that name is ./" + argument;
    for (const auto* const other : program.get_subcommands([](const CLI::App*) { return true; }))
        if (other->get_option_no_throw(name))
            return name + " is an option of " + other->get_name() + ", not of " + command.get_name();
    std::vector<std::string> known;
    for (const auto* const option : command.get_options())
        for (const auto& each : option->get_lnames())
            known.push_back("--" + each);
    const auto meant = most_similar(name, known);
    return name + ": no such option" + (meant.empty() ? "" : "; did you mean " + meant + "?");
}

/// What CLI11 found, in the words of this program.
std::string complaint_of(const CLI::App& program, const CLI::Error& error,
                         const std::vector<std::string>& arguments) {
    const std::string text = error.what();
    const auto kind = static_cast<CLI::ExitCodes>(error.get_exit_code());
    const auto chosen = program.get_subcommands();
    if (kind == CLI::ExitCodes::RequiredError)
        return "no command is given";
    if (kind == CLI::ExitCodes::ExtrasError && !chosen.empty()) {
        for (const auto& argument : arguments)
            if (argument.starts_with('-') && (text + ' ').find(' ' + argument + ' ') != text.npos)
                return unknown_option_text(program, *chosen.front(), argument);
    }
    if (kind == CLI::ExitCodes::ArgumentMismatch)
        return text.substr(0, text.find(':')) +
               (text.ends_with(" missing") ? " needs a value" : " is given more than once");
    if (const auto between = text.find(" excludes ");
        kind == CLI::ExitCodes::ExcludesError && between != text.npos)
        return text.substr(0, between) + " and " + text.substr(between + 10) + " cannot be used together";
    return text;
}

/// The arguments as CLI11 takes them, and those after "--".
struct divided_arguments {
    std::vector<std::string> front; ///< in reverse order
    std::vector<std::string> patterns;
    bool bare = false; ///< there is no command
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
    for (const auto& argument : result.front)
        if (argument.size() > 3 && argument.starts_with("--") && argument.find('=') == argument.size() - 1)
            throw CLI::ValidationError(argument.substr(0, argument.size() - 1) + " needs a value");
    const auto& first = result.front.front();
    const bool is_option = first.size() > 1 && first[0] == '-';
    result.bare = !find_command(first) && first != "--help" && first != "-h" && first != "--version";
    if (result.bare && !is_option && !is_on_disk(first))
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
    program.failure_message([&chosen, count, arguments](const CLI::App* failed, const CLI::Error& error) {
        const auto given = failed->get_subcommands();
        const auto command = given.empty() || chosen.bare ? std::string() : ' ' + given.front()->get_name();
        const std::vector<std::string> all(arguments, arguments + count);
        return "harbor: " + nio::printable(complaint_of(*failed, error, all)) + "\nSee harbor" + command +
               " --help.\n";
    });
    const command_text texts[] = {
        {options::command::expand, "Write the files of archives to disk", expand_help, "Print errors only",
         "Print the name of each file, and what happens to it"},
        {options::command::list, "Show what archives contain", list_help, "Leave out headings and totals",
         "Add compression method, cabinet folder and place in it"},
        {options::command::test, "Read archives completely, test checksums and names", test_help,
         "Print errors only", "Print the name of each file, and what happens to it"},
        {options::command::find, "Find archives anywhere inside files", find_help, "Leave out headings",
         "Add long name and MIME type of the formats"},
        {options::command::formats, "Show the formats that the plug-ins provide", "",
         "Print their names only", "Add what each can do"},
    };
    for (const auto& text : texts) {
        auto& command = add_command(program, chosen, word_of(text.meaning), text);
        add_general(command, chosen, text);
        if (text.meaning == options::command::find)
            add_find(command, chosen);
        if (text.meaning == options::command::formats || text.meaning == options::command::find)
            continue;
        command.footer(std::string(text.examples) + '\n' + pattern_help);
        add_common(command, chosen);
        if (text.meaning == options::command::list)
            add_list(command, chosen);
        else
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
        if (program.exit(error) != 0)
            return exit_status::usage;
        if (std::cout.flush())
            return exit_status::ok;
        std::cerr << "harbor: cannot write to the standard output\n";
        return exit_status::failed;
    }
    return chosen;
}

} // namespace host

#include "host/commands.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/format.h"
#include "host/extraction.h"
#include "host/json_line.h"
#include "host/platform/sandbox.h"
#include "host/platform/terminal.h"

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string_view>

namespace host {

namespace {

/// Loads the plug-ins of `wanted`, if it is given, and the standard ones.
void load_formats(Registry& formats, const std::string& wanted, report& log) {
    auto folders = Registry::standard_folders();
    if (!wanted.empty())
        folders.insert(folders.begin(), wanted);
    for (const auto& folder : folders)
        for (const auto& complaint : formats.load(folder))
            log.error(complaint);
}

bool colored(color_choice when, bool on_terminal) {
    const auto* const refused = std::getenv("NO_COLOR");
    const auto* const terminal = std::getenv("TERM");
    const bool useful =
        on_terminal && !(refused && *refused) && !(terminal && std::string_view(terminal) == "dumb");
    return when == color_choice::always || (when == color_choice::automatic && useful);
}

report::style style_for(const options& chosen) {
    const bool lists = chosen.to_run == options::command::list;
    return {.quiet = chosen.quiet,
            .verbose = chosen.verbose && chosen.to_run == options::command::expand,
            .json = chosen.json,
            .progress = !chosen.quiet && !lists && errors_on_terminal(),
            .color_output = colored(chosen.color, output_on_terminal()),
            .color_errors = colored(chosen.color, errors_on_terminal()),
            .file_objects = chosen.json && !lists && !chosen.sha256};
}

/// The folder in which `path` is, as far as its text tells.
std::string folder_of(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// What reading the archives and writing below the target takes; the formats are loaded already.
reachable_paths paths_for(const options& chosen) {
    // Modules for code pages, the time zone, the number of processors, and the terminal for questions.
    reachable_paths paths;
    paths.readable = {"/usr", "/lib", "/etc/localtime", "/proc/self/cgroup", "/sys/fs/cgroup"};
    paths.writable = {"/dev/tty"};
    for (const auto& archive : chosen.archives) {
        paths.readable.push_back(archive);
        paths.readable.push_back(folder_of(archive)); // of a set of archives the others are beside it
    }
    const char* const scratch = std::getenv("TMPDIR");
    if (chosen.to_run != options::command::expand)
        return paths;
    if (chosen.to_stdout) {
        paths.writable.emplace_back(scratch ? scratch : "/tmp");
        return paths;
    }
    const auto top = folder_around(chosen.target.empty() ? "." : chosen.target);
    paths.writable.push_back(top);
    paths.listable = {folder_of(top)}; // --sync opens the folder above
    if (chosen.nested && scratch)
        paths.writable.emplace_back(scratch);
    return paths;
}

/// "long name" for "longName".
std::string in_words(std::string_view key) {
    std::string text;
    for (const char c : key)
        if (c >= 'A' && c <= 'Z')
            text.append({' ', static_cast<char>(c - 'A' + 'a')});
        else
            text += c;
    return text;
}

} // namespace

std::string folder_around(const std::string& path) {
    std::error_code error;
    auto folder = std::filesystem::absolute(path, error);
    while (folder.has_relative_path() && !std::filesystem::is_directory(folder, error))
        folder = folder.parent_path();
    return folder.string();
}

exit_status run(const options& chosen) {
    console out;
    report log(out, style_for(chosen));
    Client client(log);
    Registry formats(client);
    VolumeFinder volumes(chosen.archives);
    command_context context{chosen, formats, client, formats.plain, log, volumes};
    client.ignore_checksums = chosen.ignore_checksums;
    client.wanted = {pattern_set(chosen.only, chosen.ignore_case),
                     pattern_set(chosen.exclude, chosen.ignore_case)};
    try {
        nio::set_code_page(chosen.encoding);
    } catch (const un::exception& failure) {
        log.error(nio::printable(failure.message()));
        return exit_status::usage;
    }
    try {
        load_formats(formats, chosen.formats, log);
        if (chosen.confined)
            confine(paths_for(chosen));
        if (chosen.confined && chosen.archives.size() == 1)
            confine_to_itself();
        switch (chosen.to_run) {
        case options::command::expand:
            expand(context);
            break;
        case options::command::list:
            list(context);
            break;
        case options::command::test:
            test(context);
            break;
        case options::command::find:
            find(context);
            break;
        case options::command::formats:
            show_formats(context);
            break;
        }
    } catch (...) {
        log.error(failure_text(std::current_exception()));
    }
    if (const auto cause = out.finish(); !cause.empty()) {
        print_error_line(red("harbor:", log.form.color_errors) +
                         " cannot write to the standard output: " + cause);
        log.note_failure();
    }
    return log.status();
}

void show_formats(command_context& context) {
    namespace key = harbor6::key;
    auto& out = context.log.out;
    const auto& chosen = context.chosen;
    for (const auto& format : context.formats.classifier.formats()) {
        const auto name = format->string(key::formatName);
        std::string names, abilities;
        json_line object("format");
        object.add("name", name);
        for (const auto* const each : {key::longName, key::suffix, key::mimeType})
            if (const auto value = format->string(each); !value.empty()) {
                names += "  " + in_words(each) + ": " + nio::printable(value) + '\n';
                object.add(each, value);
            }
        for (const auto* const each : {key::expandsArchives, key::createsArchives, key::recoversArchives,
                                       key::isFolder, key::isFile, key::isSegmented})
            if (format->hasBoolean(each)) {
                abilities += "  " + in_words(each) + ": " + (format->boolean(each) ? "yes" : "no") + '\n';
                object.add(each, format->boolean(each));
            }
        if (chosen.json)
            out.print(object.text());
        else
            out.print(bold(nio::printable(name), context.log.form.color_output) + '\n' +
                      (chosen.quiet ? "" : names) + (chosen.verbose ? abilities : ""));
    }
}

void tally_archive(command_context& context, const archive_source& archive, tally& counts,
                   bool one_after_another) {
    context.client.files_at_once = one_after_another ? 1 : std::numeric_limits<std::size_t>::max();
    const pattern::AcquiredPtr<TallyFolder> top(new TallyFolder(counts));
    extract_archive(context, archive, *top);
}

} // namespace host

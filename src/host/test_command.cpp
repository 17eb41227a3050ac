#include "harbor6/groundwork/text.h"
#include "host/commands.h"
#include "host/json_line.h"
#include "host/placement.h"
#include "host/platform/terminal.h"
#include "host/sha256.h"

namespace host {

namespace {

/// A line as "sha256sum -c" reads it, which wants a backslash in front if the name contains one or a line
/// break.
std::string digest_line(const std::string& digest, const std::string& path) {
    std::string escaped;
    for (const char c : path)
        if (c == '\\')
            escaped += "\\\\";
        else if (c == '\n')
            escaped += "\\n";
        else if (c == '\r')
            escaped += "\\r";
        else
            escaped += c;
    return (escaped == path ? "" : "\\") + digest + "  " + escaped + '\n';
}

/// Prints the digest of a file when it is complete.
class digested_file : public tally_sink {
public:
    /// `folder` is put in front of the path in what is printed as text.
    digested_file(report& reports, std::string file_path, const std::string& folder)
        : log(reports), path(std::move(file_path)), shown(folder.empty() ? path : folder + '/' + path) {
        if (output_on_terminal())
            shown = nio::printable(shown); // no program checks it there
    }

    void write(std::string_view bytes) override {
        digest.update(bytes);
        size += bytes.size();
    }
    void complete() override {
        const auto digits = digest.finish();
        if (log.form.json)
            log.out.print(json_line("file")
                              .add("archive", log.archive_name())
                              .add("path", path)
                              .add("size", size)
                              .add("sha256", digits)
                              .text());
        else
            log.out.print(digest_line(digits, shown));
    }

private:
    report& log;
    std::string path;
    std::string shown;
    std::uint64_t size = 0;
    sha256 digest;
};

void test_one(command_context& context, const archive_source& archive) {
    const auto& chosen = context.chosen;
    auto& log = context.log;
    tally counts{context.plain_format, log};
    counts.check_names = true;
    const bool several = chosen.archives.size() > 1 || archive.is_one_of_several;
    // Where expand puts several archives.
    const auto folder = needs_own_folder(context, archive) ? own_folder(archive) : std::string();
    if (chosen.sha256)
        counts.sink_for = [&](const std::string& path) {
            return std::make_shared<digested_file>(log, path, folder);
        };
    const bool speaks = !log.form.quiet && !log.form.json && !chosen.sha256;
    const auto name = nio::printable(archive.name());
    const auto ok = green("OK", log.form.color_output);
    if (speaks)
        counts.counted = [&](const tally_entry& entry) {
            log.out.print((several ? name + ": " : "") + nio::printable(entry.path) + ": " + ok +
                          (chosen.verbose ? ", " + human_size(entry.size) + '\n' : "\n"));
        };
    tally_archive(context, archive, counts);
    log.settle();
    if (!speaks)
        return;
    if (archive.bytes_behind > 0)
        log.out.print(name + ": " + counted(archive.bytes_behind, "byte") + " behind the archive\n");
    const auto& sums = log.archive_totals();
    const auto whole = counted(sums.files, "file") + ", " + human_size(sums.bytes);
    if (log.is_sound())
        log.out.print(name + ": " + ok + ", " + whole + '\n');
    else if (several || sums.files > 0)
        log.out.print(name + ": " + red("FAILED", log.form.color_output) + ", " + whole + " OK\n");
}

} // namespace

void test(command_context& context) {
    work_on_archives(context, [&](const archive_source& archive) { test_one(context, archive); });
    const auto& log = context.log;
    const auto& [all, sound] = log.archives;
    if (all > 1 && !log.form.quiet && !log.form.json && !context.chosen.sha256)
        log.out.print(un::write(sound, 10, 1) + " of " + counted(all, "archive") + " OK\n");
}

} // namespace host

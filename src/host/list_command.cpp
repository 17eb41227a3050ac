#include "harbor6/groundwork/text.h"
#include "harbor6/groundwork/time.h"
#include "harbor6/model/file.h"
#include "host/command_words.h"
#include "host/commands.h"
#include "host/json_line.h"
#include "host/listing_tree.h"

#include <algorithm>
#include <array>
#include <utility>

namespace host {

namespace {

namespace key = harbor6::key;

struct attribute {
    const char* key;
    bool io::win32::attributes::*flag;
    char letter;
};

constexpr std::array<attribute, 5> attributes = {
    {{key::readOnly, &io::win32::attributes::read_only, 'r'},
     {key::hidden, &io::win32::attributes::hidden, 'h'},
     {key::system, &io::win32::attributes::system, 's'},
     {key::archive, &io::win32::attributes::archive, 'a'},
     {key::executable, &io::win32::attributes::executable, 'x'}}};

constexpr std::size_t size_width = 10; ///< of the largest file that a cabinet can hold, in bytes
constexpr std::size_t time_width = 19;
constexpr std::size_t method_width = 7;

void add_digits(std::string& text, std::uint32_t value, unsigned digits) {
    text.append(digits, '0');
    for (auto at = text.size(); value > 0 && digits-- > 0; value /= 10)
        text[--at] = static_cast<char>('0' + value % 10);
}

/// As "2004-02-29 13:37:42", with `separator` between date and time; nothing if the file has no time.
void add_time(std::string& text, const harbor6::File& file, char separator) {
    any::time stored;
    if (!file.getTime(key::modTime, stored))
        return;
    const fs::time time(stored);
    add_digits(text, time.year, 4);
    const auto add = [&](char before, std::uint32_t value) {
        text += before;
        add_digits(text, value, 2);
    };
    add('-', time.month);
    add('-', time.day);
    add(separator, time.hour);
    add(':', time.minute);
    add(':', time.second);
}

std::uint64_t size_of(const harbor6::File& file) {
    return static_cast<std::uint64_t>(file.integer(key::uncompressedSize));
}

io::win32::attributes flags_of(const harbor6::File& file) {
    io::win32::attributes flags;
    if (!file.getStructure(key::win32Attributes, flags))
        for (const auto& each : attributes)
            flags.*each.flag = file.boolean(each.key);
    return flags;
}

std::string right(const std::string& text, std::size_t width) {
    return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

std::string left(const std::string& text, std::size_t width) {
    return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

/// Prints the files of one archive as a table, line by line.
class table {
public:
    table(report& reports, const options& wanted) : log(reports), chosen(wanted) {}

    void add(const harbor6::File& file, std::uint64_t size, const std::string& name) {
        begin();
        line = right(written(size), size_width) + "  ";
        const auto time_at = line.size();
        add_time(line, file, ' ');
        line.resize(time_at + time_width + 2, ' ');
        const auto flags = flags_of(file);
        for (const auto& each : attributes)
            line += flags.*each.flag ? each.letter : '-';
        line += "  ";
        if (chosen.verbose)
            line += left(file.string(key::compMethod), method_width) + "  " +
                    right(std::to_string(file.integer(key::folderIndex)), 6) + "  " +
                    right(std::to_string(file.integer(key::folderOffset)), size_width) + "  ";
        line += name;
        line += '\n';
        log.out.print(line);
    }
    void end(const report::totals& sums) {
        if (chosen.quiet || (sums.files == 0 && !log.is_sound()))
            return;
        begin();
        log.out.print(right(written(sums.bytes), size_width) + "  " + counted(sums.files, "file") + '\n');
    }

private:
    void begin() {
        if (std::exchange(begun, true) || chosen.quiet)
            return;
        const auto head = right("Size", size_width) + "  " + left("Modified", time_width) + "  Attr   " +
                          (chosen.verbose ? "Method   Folder      Offset  " : "") + "Name";
        log.out.print(bold(head, log.form.color_output) + '\n');
    }
    std::string written(std::uint64_t size) const {
        return chosen.human_sizes ? human_size(size) : std::to_string(size);
    }

    report& log;
    const options& chosen;
    std::string line; ///< keeps its memory
    bool begun = false;
};

void print_json(report& log, const harbor6::File& file, std::uint64_t size, const std::string& path,
                const std::string& stored) {
    json_line line("file");
    line.add("archive", log.archive_name()).add("path", path).add("size", size);
    if (stored != path)
        line.add("stored", stored);
    std::string time;
    add_time(time, file, 'T');
    if (!time.empty())
        line.add("modified", time);
    std::vector<std::string> flags;
    const auto set = flags_of(file);
    for (const auto& each : attributes)
        if (set.*each.flag)
            flags.emplace_back(each.key);
    line.add("attributes", flags);
    if (file.hasString(key::compMethod))
        line.add("method", file.string(key::compMethod))
            .add("folder", static_cast<std::uint64_t>(file.integer(key::folderIndex)))
            .add("offset", static_cast<std::uint64_t>(file.integer(key::folderOffset)));
    log.out.print(line.text());
}

void list_one(command_context& context, const archive_source& archive, bool with_title) {
    const auto& chosen = context.chosen;
    auto& log = context.log;
    if (with_title)
        log.out.print(nio::printable(archive.name()) + ":\n");
    std::optional<table> lines;
    if (!chosen.json && !chosen.tree)
        lines.emplace(log, chosen);
    listing_tree tree;
    report::totals sums;
    auto& client = context.client;
    client.announce = [&](const harbor6::File& file, harbor6::Folder&, const std::string& path) {
        const auto size = size_of(file);
        ++sums.files;
        sums.bytes += size;
        if (!chosen.check)
            log.count(size);
        std::string stored;
        if (!file.getString(key::pathName, stored))
            stored = path;
        if (chosen.json)
            return print_json(log, file, size, path, stored);
        // The user sees what the archive says, as well as what becomes of it.
        const auto name = nio::printable(stored) + (stored == path ? "" : " -> " + nio::printable(path));
        if (lines)
            lines->add(file, size, name);
        else
            tree.add(path, stored == path ? std::string() : "stored as " + nio::printable(stored));
    };
    client.head_only = !chosen.check;
    tally counts{context.plain_format, log};
    tally_archive(context, archive, counts);
    if (chosen.tree && (sums.files > 0 || log.is_sound()))
        tree.print(log.out, nio::printable(archive.name()));
    log.settle();
    if (lines)
        lines->end(sums);
}

} // namespace

void list(command_context& context) {
    const auto& chosen = context.chosen;
    bool first = true;
    bool any = false;
    work_on_archives(context, [&](const archive_source& archive) {
        const bool plain = !chosen.json && !chosen.quiet;
        if (plain && !first)
            context.log.out.print("\n");
        first = false;
        const bool several = chosen.archives.size() > 1 || archive.is_one_of_several;
        list_one(context, archive, plain && several && !chosen.tree);
        any = any || context.log.archive_totals().files > 0;
    });
    // What came from the standard input is gone, and what isn't printable can't be typed.
    std::string to_write;
    for (const auto& archive : chosen.archives) {
        to_write += ' ' + quoted(archive);
        any = any && archive != "-" && nio::printable(archive) == archive;
    }
    if (chosen.bare && context.log.status() == exit_status::ok && any && !chosen.quiet && !chosen.json)
        context.log.out.print("\nTo write these files to disk: harbor expand" + to_write + '\n');
}

} // namespace host

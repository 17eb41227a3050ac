#include "host/report.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"
#include "host/json_line.h"
#include "host/memory_reserve.h"

#include <new>
#include <utility>

namespace host {

std::string counted(std::uint64_t number, const std::string& noun) {
    return un::write(number, 10, 1) + ' ' + noun + (number == 1 ? "" : "s");
}

std::string human_size(std::uint64_t bytes) {
    constexpr const char* units[] = {" B", " KB", " MB", " GB", " TB", " PB", " EB"};
    if (bytes < 1000)
        return un::write(bytes, 10, 1) + units[0];
    std::size_t unit = 1;
    std::uint64_t scale = 1000;
    while (bytes / (scale / 10) >= 9995) { // would be rounded to 1000
        scale *= 1000;
        ++unit;
    }
    const auto hundredths = bytes / (scale / 100);
    return hundredths < 995 ? un::write((hundredths + 5) / 100, 10, 1) + '.' +
                                  un::write((hundredths + 5) / 10 % 10, 10, 1) + units[unit]
                            : un::write((hundredths + 50) / 100, 10, 1) + units[unit];
}

std::string red(const std::string& text, bool colored) {
    return colored ? "\x1b[1;31m" + text + "\x1b[0m" : text;
}

std::string green(const std::string& text, bool colored) {
    return colored ? "\x1b[1;32m" + text + "\x1b[0m" : text;
}

std::string bold(const std::string& text, bool colored) {
    return colored ? "\x1b[1m" + text + "\x1b[0m" : text;
}

/// Runs `line`, which reports something. Files are reported from destructors too, so it must not raise.
template<class Line>
void report::guarded(Line line) {
    try {
        line();
    } catch (const std::bad_alloc&) {
        sound = false;
        failed = true;
        print_out_of_memory();
    }
}

void report::begin_archive(const std::string& name) {
    memory_reserve::refill();
    archive = name;
    sums = {};
    afterwards.clear();
    ended_early = 0;
    sound = true;
}

/// `path` is the file in question, empty for the archive itself; `text` is printable.
void report::print_error(const std::string& path, const std::string& text) {
    if (!form.json)
        return error(nio::printable(archive) + ": " + (path.empty() ? "" : nio::printable(path) + ": ") +
                     text);
    sound = false;
    failed = true;
    json_line line("error");
    line.add("archive", archive);
    if (!path.empty())
        line.add("path", path);
    out.print(line.add("message", text).text());
}

void report::damage(const std::exception_ptr& failure) {
    const auto in_data = [this] { return std::exchange(ended_early, 0) == 1 ? at_hand : std::string(); };
    std::string path;
    try {
        std::rethrow_exception(failure);
    } catch (const format::exception&) {
        path = in_data();
    } catch (const basic::algorithm_exception&) {
        path = in_data();
    } catch (...) {
        path.clear(); // the archive as a whole
    }
    print_error(path, failure_text(failure));
}

void report::settle() {
    for (const auto& [path, text] : std::exchange(afterwards, {}))
        print_error(path, text);
}

bool report::end_archive() {
    meter.end();
    settle();
    ++archives.all;
    archives.sound += sound;
    return sound;
}

void report::error(const std::string& text) {
    sound = false;
    failed = true;
    if (form.json) {
        out.print(json_line("error").add("message", text).text());
        return;
    }
    out.flush(); // keeps the order where both outputs are one terminal
    print_error_line(red("harbor:", form.color_errors) + ' ' + text);
}

void report::count(std::uint64_t size) {
    ++sums.files;
    sums.bytes += size;
}

void report::done(const std::string& path, std::uint64_t size) {
    count(size);
    if (form.file_objects)
        guarded([&] {
            out.print(json_line("file").add("archive", archive).add("path", path).add("size", size).text());
        });
    else if (form.verbose)
        guarded([&] { out.print(nio::printable(path) + "\n"); });
}

void report::refused(const std::string& path, const std::string& reason) {
    guarded([&] { print_error(path, reason); });
}

void report::unfinished(const std::string& path, std::uint64_t size, const std::string& reason) {
    guarded([&] {
        afterwards.emplace_back(path, "incomplete after " + un::write(size, 10, 1) + " bytes" +
                                          (reason.empty() ? "" : ": " + nio::printable(reason)));
        if (reason.empty()) {
            at_hand = path;
            ++ended_early;
        }
    });
}

void report::missing(const std::string& path) {
    guarded([&] { afterwards.emplace_back(path.empty() ? "(no name)" : path, "no data arrived"); });
}

void report::moved(const std::string& from, const std::string& to) {
    // The folder in `from` has a temporary name, which means nothing to the user.
    if (form.verbose && !form.json)
        guarded([&] {
            out.print(nio::printable(nio::leaf(from, '/')) + ": now at " + nio::printable(to) + "\n");
        });
}

void report::planned(const std::string& path, std::uint64_t size, bool replaces) {
    count(size);
    if (form.json) {
        json_line line("plan");
        line.add("archive", archive).add("path", path).add("size", size).add("exists", replaces);
        out.print(line.text());
    } else if (!form.quiet) {
        out.print(nio::printable(path) + (replaces ? " (replaces the existing file)\n" : "\n"));
    }
}

void report::renamed(const std::string& from, const std::string& to) {
    if (form.verbose && !form.json)
        out.print(nio::printable(from) + ": becomes " + nio::printable(to) + "\n");
}

void report::skipped(const std::string& path, const std::string& reason) {
    ++sums.skipped;
    if (form.json)
        out.print(
            json_line("skipped").add("archive", archive).add("path", path).add("message", reason).text());
    else if (form.verbose)
        out.print(nio::printable(path) + ": " + reason + "\n");
}

} // namespace host

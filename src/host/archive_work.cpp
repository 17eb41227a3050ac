#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/source_file.h"
#include "host/commands.h"
#include "host/json_line.h"
#include "host/placement.h"
#include "host/platform/sandbox.h"
#include "host/platform/terminal.h"
#include "host/platform/worker_processes.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <thread>

namespace host {

namespace {

using archive_work = std::function<void(const archive_source&)>;

/// Works on the archives in one file. Returns whether all went well.
bool work_on_file(command_context& context, const std::string& file, const archive_work& work) {
    auto& log = context.log;
    bool all_sound = true;
    context.volumes.beginArchive(file);
    const bool all_found = for_each_archive(context, file, [&](archive_source archive) {
        archive.number = context.numbers[file];
        log.begin_archive(archive.name());
        work(archive);
        const bool sound = log.end_archive();
        all_sound = all_sound && sound;
        if (!context.chosen.json)
            return;
        const auto& sums = log.archive_totals();
        json_line line("archive");
        line.add("archive", archive.name()).add("files", sums.files).add("bytes", sums.bytes);
        if (sums.skipped > 0)
            line.add("kept", sums.skipped);
        log.out.print(line.add("ok", sound).text());
    });
    return all_sound && all_found;
}

/// Whether the file may be a volume that continues another one, which may be given too.
bool may_continue_another(command_context& context, const std::string& path) {
    std::error_code ignored;
    const auto kind = std::filesystem::status(path, ignored).type();
    if (kind != std::filesystem::file_type::regular)
        return path == "-" || (kind != std::filesystem::file_type::not_found &&
                               kind != std::filesystem::file_type::directory); // a pipe is read once
    try {
        const pattern::AcquiredPtr<SourceFile> file(
            new SourceFile(context.plain_format, path, archive_source{path}.open()));
        return static_cast<bool>(
            pattern::AcquiredPtr(context.formats.classifier.acquireContinuedArchive(*file)));
    } catch (const fs::Exception&) {
        return false; // what works on it reports that
    }
}

/// How many processes work: one if questions may be asked, if an archive is given twice, or if volumes
/// of a set may be among the files, each of which is read only once.
std::size_t process_count(command_context& context) {
    const auto& chosen = context.chosen;
    const auto& files = chosen.archives;
    const bool expands = chosen.to_run == options::command::expand;
    if (!expands && chosen.to_run != options::command::test)
        return 1;
    if (expands && chosen.policy == clash_policy::ask && errors_on_terminal())
        return 1;
    if (expands && std::set(files.begin(), files.end()).size() < files.size())
        return 1;
    const std::size_t wanted = chosen.jobs > 0 ? chosen.jobs : std::thread::hardware_concurrency();
    const auto at_once = std::min(wanted, files.size());
    const auto continues = [&](const std::string& file) { return may_continue_another(context, file); };
    return at_once > 1 && std::any_of(files.begin(), files.end(), continues) ? 1 : at_once;
}

/// How far the processes are, together.
class common_progress {
public:
    explicit common_progress(const std::vector<std::string>& files)
        : places(static_cast<std::atomic<std::uint64_t>*>(
              shared_memory(files.size() * sizeof(std::atomic<std::uint64_t>)))),
          count(files.size()) {
        for (const auto& file : files) {
            std::error_code error;
            const auto size = std::filesystem::file_size(file, error);
            total = error || total == progress::unknown ? progress::unknown : total + size;
        }
    }

    void count_in(report& log, std::size_t number) {
        if (places)
            log.meter.count_in(places[number]);
    }
    void show(bool shown, std::size_t ended) const {
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begun;
        if (!shown || !places || passed.count() < 0.5)
            return;
        std::uint64_t done = 0;
        for (std::size_t i = 0; i < count; ++i)
            done += places[i].load(std::memory_order_relaxed);
        show_status(progress_line(done, total, passed.count(),
                                  un::write(ended, 10, 1) + " of " + counted(count, "archive"),
                                  terminal_width() - 1));
    }

private:
    std::atomic<std::uint64_t>* places; ///< null if no memory is left
    std::size_t count;
    std::uint64_t total = 0;
    std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
};

/// How many files, one after another, a process works on: starting one costs more than a small archive.
std::size_t batch_size(std::size_t files, std::size_t at_once) {
    constexpr std::size_t batches_for_each = 8, largest = 32;
    return std::clamp(files / (at_once * batches_for_each), std::size_t{1}, largest);
}

/// Works on the files in `at_once` processes at a time. Returns whether all went well.
bool work_in_processes(command_context& context, std::size_t at_once, const archive_work& work) {
    auto& log = context.log;
    const auto& files = context.chosen.archives;
    const auto batch = batch_size(files.size(), at_once);
    const auto end_of = [&](std::size_t number) { return std::min(files.size(), (number + 1) * batch); };
    bool all_sound = true;
    std::size_t ended = 0;
    common_progress common(files);
    worker_processes processes;
    processes.work = [&](std::size_t number) {
        bool sound = true;
        log.archives = {};
        if (context.chosen.confined)
            confine_to_itself();
        for (auto i = number * batch; i < end_of(number); ++i) {
            common.count_in(log, i);
            try {
                sound = work_on_file(context, files[i], work) && sound;
            } catch (...) {
                log.error(failure_text(std::current_exception()));
                sound = false;
            }
        }
        const auto cause = log.out.finish();
        worker_processes::send_message(un::write(log.archives.all, 10, 1) + ' ' +
                                       un::write(log.archives.sound, 10, 1) + ' ' +
                                       context.client.wanted.only.used_marks());
        return static_cast<int>(sound && cause.empty() ? exit_status::ok : exit_status::failed);
    };
    processes.receive = [&](std::size_t, std::string_view message) {
        std::istringstream words{std::string(message)};
        report::archive_counts more;
        std::string marks;
        words >> more.all >> more.sound >> marks;
        log.archives.all += more.all;
        log.archives.sound += more.sound;
        context.client.wanted.only.add_used(marks);
    };
    processes.ended = [&](std::size_t number, int status) {
        ended = end_of(number);
        if (status < 0) {
            log.error(nio::printable(files[number * batch]) + ": the process for it was ended by signal " +
                      std::to_string(-status));
            log.archives.all += ended - number * batch;
        }
        if (status != 0) {
            all_sound = false;
            log.note_failure();
        }
    };
    processes.tick = [&] { common.show(log.form.progress, ended); };
    log.out.flush();
    processes.run((files.size() + batch - 1) / batch, at_once);
    show_status({});
    return all_sound;
}

/// Numbers files that would get one folder, such as a/x.cab and b/x.cab: the second one gets "x (2)".
std::map<std::string, unsigned> numbers_of(const std::vector<std::string>& files) {
    std::set<std::string> used;
    for (const auto& file : files)
        used.insert(own_folder({file}));
    std::map<std::string, unsigned> numbers;
    std::set<std::string> first;
    for (const auto& file : files) {
        archive_source archive{file};
        if (numbers.contains(file) || first.insert(own_folder(archive)).second) {
            numbers.try_emplace(file, 1);
            continue;
        }
        do
            ++archive.number;
        while (!used.insert(own_folder(archive)).second);
        numbers.emplace(file, archive.number);
    }
    return numbers;
}

} // namespace

void work_on_archives(command_context& context, const archive_work& work) {
    const auto& files = context.chosen.archives;
    const auto& chosen = context.chosen;
    const bool speaks = !chosen.quiet && !chosen.json && !chosen.sha256 && !chosen.to_stdout;
    context.numbers = numbers_of(files);
    const auto at_once = process_count(context);
    bool all_sound = true;
    if (at_once > 1)
        all_sound = work_in_processes(context, at_once, work);
    else
        for (const auto& file : files)
            if (!context.client.stopped && !context.volumes.wasUsed(file))
                all_sound = work_on_file(context, file, work) && all_sound;
            else if (!context.client.stopped && speaks)
                context.log.out.print(nio::printable(file) + ": read as a part of a set\n");
    for (const auto& pattern : context.client.wanted.only.unused())
        if (all_sound)
            context.log.error(
                nio::printable(pattern) +
                (files.size() == 1 ? ": not found in the archive" : ": not found in any archive") +
                (pattern.starts_with('-') ? " (options stand before --)" : ""));
}

} // namespace host

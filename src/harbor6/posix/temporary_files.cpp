#include "harbor6/posix/temporary_files.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/posix/directory_tree.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace host {

namespace {

constexpr std::string_view prefix = ".harbor-";
constexpr int ending_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

struct noted_changes {
    std::mutex lock;
    std::set<const undo_note*> notes;
};

/// Never destroyed: a signal may arrive while the process exits.
noted_changes& noted() {
    static auto& all = *new noted_changes;
    return all;
}

/// Doesn't return.
void remove_and_end(int signal) {
    noted().lock.lock(); // for good: no other file is made from now on
    for (const auto* const note : noted().notes) {
        try {
            note->undo();
        } catch (const std::exception&) {
            // The others are undone all the same.
        }
    }
    std::signal(signal, SIG_DFL);
    sigset_t only = {};
    sigemptyset(&only);
    sigaddset(&only, signal);
    kill(getpid(), signal);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
}

/// The process in the name of a temporary file; 0 if the name is of another kind.
pid_t process_of(const std::string& name) {
    pid_t process = 0;
    unsigned number = 0;
    const auto* const end = name.data() + name.size();
    if (!name.starts_with(prefix))
        return 0;
    const auto first = std::from_chars(name.data() + prefix.size(), end, process);
    if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-' || process <= 0)
        return 0;
    const auto second = std::from_chars(first.ptr + 1, end, number);
    return second.ec == std::errc() && second.ptr == end ? process : 0;
}

/// Whether another process, maybe one whose number means nothing here, has the file open for writing.
bool is_in_use(int folder, const char* name) {
    const file_descriptor file(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    return !file || fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
           flock(file.get(), LOCK_EX | LOCK_NB) != 0;
}

} // namespace

void remove_temporary_files_on_signals() {
    sigset_t awaited = {};
    sigemptyset(&awaited);
    for (const int signal : ending_signals) {
        struct sigaction action = {};
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&awaited, signal);
    }
    sigset_t before = {};
    pthread_sigmask(SIG_BLOCK, &awaited, &before);
    noted();
    try {
        std::thread([awaited] {
            int signal = 0;
            if (sigwait(&awaited, &signal) == 0)
                remove_and_end(signal);
        }).detach();
    } catch (const std::system_error&) {
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
}

std::string new_temporary_name() {
    static std::atomic<unsigned> number = 0;
    return std::string(prefix) + std::to_string(getpid()) + "-" + std::to_string(number++);
}

bool is_temporary_name(const std::string& name) {
    return process_of(name) != 0;
}

void remove_abandoned_files(int folder) {
    file_descriptor reading(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(reading ? fdopendir(reading.get()) : nullptr, closedir);
    if (!entries)
        return;
    reading.release();
    while (const dirent* const entry = readdir(entries.get())) {
        const auto process = process_of(entry->d_name);
        if (process != 0 && kill(process, 0) != 0 && errno == ESRCH && !is_in_use(folder, entry->d_name))
            unlinkat(folder, entry->d_name, 0);
    }
}

uninterrupted_step::uninterrupted_step() {
    noted().lock.lock();
}

uninterrupted_step::~uninterrupted_step() {
    noted().lock.unlock();
}

void undo_note::keep(bool wanted) {
    auto& notes = noted().notes;
    if (wanted)
        notes.insert(this);
    else
        notes.erase(this);
}

temporary_name::~temporary_name() {
    if (empty())
        return;
    const uninterrupted_step step;
    clear();
}

void temporary_name::set(std::string value) {
    keep(!value.empty());
    name = std::move(value);
}

void temporary_name::undo() const {
    tree.reopened().remove_file(folder, name);
}

renamed_folder::~renamed_folder() {
    if (now.empty())
        return;
    const uninterrupted_step step;
    clear();
}

void renamed_folder::set(std::string own_path, std::string path_now) {
    keep(!path_now.empty());
    own = std::move(own_path);
    now = std::move(path_now);
}

void renamed_folder::undo() const {
    auto opened = tree.reopened();
    try {
        opened.remove_folder(now);
    } catch (const fs::Exception&) {
        opened.rename(now, own, false);
    }
}

} // namespace host

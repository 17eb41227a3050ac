#include "host/platform/file_writer.h"

#include "host/platform/system_error.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

std::atomic<const char*> unfinished_name = nullptr;
std::atomic<int> unfinished_folder = -1;
static_assert(std::atomic<const char*>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

extern "C" void remove_and_end(int signal) {
    if (const char* const name = unfinished_name)
        unlinkat(unfinished_folder, name, 0);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void install_handlers() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal, remove_and_end) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

} // namespace

remove_on_signal::remove_on_signal(int folder, const char* name) : mine(name) {
    [[maybe_unused]] static const bool installed = (install_handlers(), true);
    unfinished_name = nullptr; // so that the handler never joins one file's name with another's folder
    unfinished_folder = folder;
    unfinished_name = name;
}

remove_on_signal::~remove_on_signal() {
    unfinished_name.compare_exchange_strong(mine, nullptr);
}

namespace {

constexpr int create_flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;

std::string unused_name() {
    static unsigned number = 0;
    return ".harbor-" + std::to_string(getpid()) + "-" + std::to_string(number++);
}

} // namespace

file_writer::file_writer(directory_tree& target, const std::string& folder_path, const std::string& file_name,
                         bool replacing)
    : path(join_path(folder_path, file_name)), folder(target.make_folder(folder_path)), name(file_name) {
    do {
        if (replacing)
            temporary = unused_name();
        const auto& created = replacing ? temporary : name;
        file = file_descriptor(openat(folder->get(), created.c_str(), create_flags, 0666));
    } while (!file && replacing && errno == EEXIST);
    if (!file)
        throw_system_error("create", path, errno);
    unfinished.emplace(folder->get(), temporary.empty() ? name.c_str() : temporary.c_str());
}

file_writer::~file_writer() {
    if (!temporary.empty())
        unlinkat(folder->get(), temporary.c_str(), 0);
}

void file_writer::write(std::string_view bytes) {
    write_at(end, bytes);
    end += bytes.size();
}

void file_writer::write_at(std::uint64_t offset, std::string_view bytes) {
    const auto result = write_all(file.get(), bytes, offset);
    extent = std::max(extent, offset + result.written);
    if (result.error != 0)
        fail(result.error);
}

void file_writer::resize(std::uint64_t size) {
    if (ftruncate(file.get(), static_cast<off_t>(size)) != 0)
        fail(errno);
    extent = size;
}

void file_writer::discard() {
    unlinkat(folder->get(), temporary.empty() ? name.c_str() : temporary.c_str(), 0);
    unfinished.reset();
    temporary.clear();
}

void file_writer::fail(int error) {
    cause = error_text(error);
    throw_system_error("write", path, error);
}

void file_writer::finish(const std::optional<std::time_t>& modified) {
    if (modified) {
        const timespec times[2] = {{0, UTIME_OMIT}, {*modified, 0}};
        if (futimens(file.get(), times) != 0)
            throw_system_error("set the time of", path, errno);
    }
    if (const int error = file.close())
        throw_system_error("write", path, error);
    if (!temporary.empty() && renameat(folder->get(), temporary.c_str(), folder->get(), name.c_str()) != 0)
        throw_system_error("replace", path, errno);
    unfinished.reset();
    temporary.clear();
}

} // namespace host

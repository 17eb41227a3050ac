#include "host/disk_unfinished.h"

#include <atomic>
#include <csignal>
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

void watch_signals() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        if (std::signal(signal, remove_and_end) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

} // namespace

disk_unfinished::disk_unfinished(int folder, const char* name) : mine(name) {
    static const bool watching = (watch_signals(), true);
    static_cast<void>(watching);
    unfinished_name = nullptr; // never one file's name with another's folder
    unfinished_folder = folder;
    unfinished_name = name;
}

disk_unfinished::~disk_unfinished() {
    unfinished_name.compare_exchange_strong(mine, nullptr);
}

} // namespace host

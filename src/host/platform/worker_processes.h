#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace host {

/// Runs several pieces of work at a time, each in a process of its own, and passes on what they print in the
/// order of their numbers. To be made before any thread is started. If this process ends, the others end as
/// SIGTERM ends them.
class worker_processes {
public:
    /// The work with a number, which returns the exit status. It runs in the new process, where the console
    /// prints to this one.
    std::function<int(std::size_t number)> work;
    /// Takes a message that the work with that number has sent by send_message().
    std::function<void(std::size_t number, std::string_view message)> receive;
    /// The work has ended: with an exit status, or with minus the number of a signal.
    std::function<void(std::size_t number, int status)> ended;
    /// Called ten times a second.
    std::function<void()> tick;

    /// Does the work with all numbers below `count`, `at_once` of them at a time. Raises fs::Exception if no
    /// process can be started.
    void run(std::size_t count, std::size_t at_once);

    /// Sends a message from the work to the process that started it.
    static void send_message(std::string_view message);
};

/// Memory that this process and those started from it share, filled with zeros; null if there is none left.
void* shared_memory(std::size_t bytes);

} // namespace host

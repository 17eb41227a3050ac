#pragma once

// What the system asks of the platform beyond the standard library: events, worker threads, loadable
// libraries. Nothing here raises an exception but `library` and `executable_path`; the wrappers in
// concurrency/ turn a refusal into one. The bodies stand in platform*.cpp, and no other file below the host
// knows the platform.

#include "harbor6/groundwork/export.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace platform {

/// Whether a wait spins before it sleeps. Where the other side is busy on another processor a spin of some
/// microseconds saves two switches that cost ten times as much; where the two share a processor it only keeps
/// the other side from its work. Nobody can tell beforehand, so those who wait in one place share what they
/// saw: after spins in vain many waits sleep at once, after spins that paid none does.
class patience {
public:
    /// Asks `ready` until it says yes or patience is out; what it said last.
    template<class Ready>
    bool spin(Ready ready) noexcept;

private:
    bool willing() noexcept;
    void learn(bool paid) noexcept;

    // Hints without anything behind them: all accesses are relaxed.
    std::atomic<std::uint32_t> in_vain{0}; ///< spins in vain count two, spins that paid take one off
    std::atomic<std::uint32_t> pause{0};   ///< how many waits are still to sleep at once
};

/// A signal that one thread gives and another waits for. It is remembered: one that nobody waits for yet ends
/// the next wait at once. Signals that meet an event still signalled count as one. Any thread may call
/// anything. What was written before a signal is seen after the wait that takes it.
class event {
public:
    /// Not signalled at first. With `auto_reset` the wait that takes a signal clears it; without, it stays.
    /// Null if there is no memory.
    static std::unique_ptr<event> create(bool auto_reset) noexcept;
    explicit event(bool auto_reset) noexcept;
    event(const event&) = delete;
    event& operator=(const event&) = delete;

    /// Each says whether the platform did it. `signal` touches nothing of the event once a waiter can see it,
    /// so the waiter may destroy the event at once.
    bool signal() noexcept;
    bool reset() noexcept;
    bool wait() noexcept;

private:
    bool take() noexcept;

    const bool auto_reset;
    std::atomic<std::uint32_t> word{0}; ///< bit 0: signalled; above it the number of sleepers
    patience waiting;
};

/// One run of a function on a thread of its own. Threads whose run has ended are parked, a handful of them,
/// and handed out again. They take no signals of the process, end when the process or this library does, and
/// after a fork the child begins without any. A run that lasts beyond the end of the library is the caller's
/// fault.
struct worker;

/// Runs `entry(argument)` on another thread; `entry` lets no exception out. Null if there is no thread to be
/// had.
worker* start_worker(void (*entry)(void*), void* argument) noexcept;
/// Waits until the run has ended; all that it did is seen by the caller then. False if there is nothing to
/// wait for, as in a forked child.
bool join_worker(worker& handle) noexcept;
/// Raises the thread's priority above the platform's normal by `priority`, or lowers it. False if it can't.
bool set_worker_priority(worker& handle, std::int32_t priority) noexcept;
/// Gives the handle back. A run that goes on goes on.
void close_worker(worker* handle) noexcept;

/// Has `renew` called in every child that this process forks.
void call_in_forked_child(void (*renew)()) noexcept;

/// A shared library that stays loaded as long as this object holds it.
class HARBOR6_API library {
public:
    library() = default;
    /// Loads the library in the file `path`. Raises un::exception with the platform's words.
    explicit library(const std::string& path);
    library(library&& other) noexcept;
    library& operator=(library&& other) noexcept;
    ~library();

    /// Loads a library in place of the one held, which goes first. Fails as the constructor does.
    void open(const std::string& path);
    /// Where the library has its function or variable `name`, never null. Raises un::exception with the
    /// platform's words if it has none, or if nothing is loaded.
    void* symbol(const std::string& name) const;
    void close() noexcept;

private:
    void* handle = nullptr;
};

/// The file that this process runs. Raises un::exception if the platform doesn't say.
HARBOR6_API std::string executable_path();

} // namespace platform

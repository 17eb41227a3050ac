#pragma once

// What the system needs from the platform beyond the standard library: events, worker threads, loadable
// libraries, temporary files, code pages. Failures are exceptions, except that events and workers report
// theirs by results, which the wrappers in concurrency/ turn into exceptions. The bodies are in
// platform*.cpp; no other file below the host contains platform code.

#include "harbor6/groundwork/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

/// Decides whether a wait spins before it sleeps. If the other side is busy on another processor, a spin of
/// some microseconds saves two context switches that cost ten times as much; if both share a processor, it
/// only delays the other side. Which case holds isn't known beforehand, so all waits on one object share what
/// they learned: after spins that failed the next waits sleep at once, after spins that succeeded they spin.
/// Any thread may call it.
class spin_policy {
public:
    /// Calls `ready` until it returns true or the time for spinning is over. Returns its last result.
    template<class Ready>
    bool spin(Ready ready) noexcept;

private:
    bool should_spin() noexcept;
    void record(bool succeeded) noexcept;

    // Statistics that no other data depends on: all accesses are relaxed.
    std::atomic<std::uint32_t> failures{0};       ///< a failed spin adds two, a successful one takes one off
    std::atomic<std::uint32_t> spinless_waits{0}; ///< how many of the next waits sleep at once
};

/// A signal that one thread sets and another waits for. It is remembered: a signal set before the wait ends
/// that wait at once. Signals set while the event is signalled count as one. Any thread may call any
/// operation. What was written before a signal is visible after the wait that takes it.
class event {
public:
    /// A new event, not signalled. With `auto_reset` the wait that takes a signal clears it; without, it
    /// stays until reset(). Null if there is no memory.
    static std::unique_ptr<event> create(bool auto_reset) noexcept;
    explicit event(bool auto_reset) noexcept;
    event(const event&) = delete;
    event& operator=(const event&) = delete;

    /// These return false if the platform refuses. `signal` doesn't access the event once a waiter can see
    /// the signal, so the waiter may destroy the event at once. `wait` has no time limit.
    bool signal() noexcept;
    bool reset() noexcept;
    bool wait() noexcept;

private:
    bool take() noexcept;

    const bool auto_reset;
    std::atomic<std::uint32_t> word{0}; ///< bit 0: signalled; above it the number of sleepers
    spin_policy spinning;
};

/// One run of a function on a thread of its own, held by the caller that started it until close_worker. A few
/// threads are kept after their run and used for later runs. They block all signals and end when the process
/// or this library ends; a forked child has none of them. A run must not outlast the library.
struct worker;

/// Runs `entry(argument)` on another thread; `entry` must not throw. Null if no thread is available.
worker* start_worker(void (*entry)(void*), void* argument) noexcept;
/// Waits until the run has ended; everything it wrote is then visible to the caller. False if there is no
/// such thread, as in a forked child.
bool join_worker(worker& handle) noexcept;
/// Sets the thread's priority to the platform's normal one plus `priority`. False if the platform refuses.
bool set_worker_priority(worker& handle, std::int32_t priority) noexcept;
/// Gives up the handle, which is not null. A run that is still active continues.
void close_worker(worker* handle) noexcept;

/// How many bytes of stack the calling thread has left, about; a very large number if the platform doesn't
/// tell.
std::uint64_t stack_left() noexcept;

/// Registers `renew` to be called in every child that this process forks.
void call_in_forked_child(void (*renew)()) noexcept;

/// A shared library that stays loaded as long as this object holds it. Movable; the moved-from object may
/// hold a library that the target held before. One thread at a time.
class HARBOR6_API library {
public:
    library() = default;
    /// Loads the library in the file `path`. Raises un::exception with the platform's message, and what a
    /// constructor in the library raises; the library then stays loaded for good.
    explicit library(const std::string& path);
    library(library&& other) noexcept;
    library& operator=(library&& other) noexcept;
    /// Unloads the library.
    ~library();

    /// Unloads the library held, then loads another one. Fails as the constructor does, and then holds none.
    void open(const std::string& path);
    /// The address of the library's function or variable `name`, never null; valid while the library is
    /// loaded. Raises un::exception with the platform's message if there is none, or if no library is loaded.
    void* symbol(const std::string& name) const;
    /// Unloads the library, if one is loaded.
    void close() noexcept;

private:
    void* handle = nullptr;
};

/// An open file without a name in a folder: no other process sees it, and its bytes are gone once it is
/// closed or the process ends. Failures raise fs::Exception with the folder and the platform's message.
/// Movable; used by one thread at a time.
class temporary_file {
public:
    /// Creates an empty one in `folder`.
    explicit temporary_file(const std::string& folder);
    temporary_file(temporary_file&& other) noexcept;
    temporary_file& operator=(temporary_file&& other) noexcept;
    ~temporary_file();

    /// Writes all of `bytes` at `offset`.
    void write(std::uint64_t offset, const char* bytes, std::size_t length);
    /// Reads `length` bytes at `offset`, all of which must have been written.
    void read(std::uint64_t offset, char* buffer, std::size_t length) const;

private:
    [[noreturn]] void fail(const char* operation, int error) const;

    std::string folder;
    int descriptor;
};

/// The path of the program file of this process. Raises un::exception if the platform doesn't tell.
HARBOR6_API std::string executable_path();
/// The path of the file of this library. Empty if the platform doesn't tell.
std::string library_path();
/// The environment variable `name`. Empty if it isn't set, or if the process has more rights than its user.
HARBOR6_API std::string trusted_environment(const char* name);

/// An 8-bit or multi-byte encoding that the platform knows by name. Several threads may use one at once.
class code_page {
public:
    /// Raises un::exception "unknown code page NAME" if the platform doesn't know it.
    explicit code_page(const std::string& name);

    /// Unicode of `text`; a byte that is invalid in the encoding becomes U+FFFD. Raises un::exception as the
    /// constructor does if the platform can't open the conversion any more.
    std::wstring decode(std::string_view text) const;

private:
    std::string name;
};

} // namespace platform

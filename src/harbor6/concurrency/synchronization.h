#pragma once

#include "harbor6/groundwork/export.h"

#include <memory>
#include <mutex>

namespace basic {

/// A lock that one thread at a time holds. Its holder may enter again, and leaves as often as it has entered.
class HARBOR6_API critical_section {
public:
    critical_section() = default;
    critical_section(const critical_section&) = delete;
    critical_section& operator=(const critical_section&) = delete;

    void enter() { mutex.lock(); }
    void leave() { mutex.unlock(); }

private:
    std::recursive_mutex mutex;
};

/// Holds a critical section, which must outlive it, for as long as it lives.
class HARBOR6_API scoped_lock {
public:
    explicit scoped_lock(critical_section& entered) : section(entered) { section.enter(); }
    scoped_lock(const scoped_lock&) = delete;
    scoped_lock& operator=(const scoped_lock&) = delete;
    ~scoped_lock() { section.leave(); }

private:
    critical_section& section;
};

} // namespace basic

namespace platform {
class event;
}

namespace basic {

/// A signal that one thread gives and another waits for, not given at first. It is remembered: a signal that
/// comes before the wait isn't lost, and several before one wait count as one. Any thread may call any
/// operation; what was written before a signal is seen after the wait that it ends. Every failure is a
/// basic::exception.
class HARBOR6_API event {
public:
    /// With `auto_reset` the event releases one waiter and clears itself; without, it stays until reset() and
    /// releases all. Raises "cannot create an event".
    explicit event(bool auto_reset);
    event(const event&) = delete;
    event& operator=(const event&) = delete;
    ~event();

    /// Raises "cannot signal an event".
    void signal();
    /// Takes back a signal that nobody has waited for. Raises "cannot reset an event".
    void reset();
    /// Waits for a signal, however long it takes. Raises "wait for an event failed".
    void wait();

private:
    std::unique_ptr<platform::event> handle;
};

} // namespace basic

#pragma once

// Locks and events. No object of this header may be copied or moved, and none may be destroyed while a thread
// holds it or waits for it.

#include "harbor6/groundwork/export.h"

#include <memory>
#include <mutex>

namespace platform {
class event;
}

namespace basic {

/// A lock that one thread at a time holds. Its holder may enter again, and leaves as often as it has entered.
class HARBOR6_API critical_section {
public:
    critical_section() = default;
    critical_section(const critical_section&) = delete;
    critical_section& operator=(const critical_section&) = delete;

    /// Waits until no other thread holds the lock, however long it takes.
    void enter() { mutex.lock(); }
    /// Called by the holder only.
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

/// A signal that one thread sets and another waits for; not set at first. It is remembered: a signal set
/// before the wait isn't lost, and several before one wait count as one. Any thread may call any operation;
/// what was written before a signal is visible after the wait that it ends. Every failure is a
/// basic::exception.
class HARBOR6_API event {
public:
    /// With `auto_reset` a signal releases one waiter and is then cleared; without, it stays until reset()
    /// and releases all. Raises "cannot create an event".
    explicit event(bool auto_reset);
    event(const event&) = delete;
    event& operator=(const event&) = delete;
    ~event();

    /// Sets the signal. Raises "cannot signal an event".
    void signal();
    /// Clears a signal that no wait has taken. Raises "cannot reset an event".
    void reset();
    /// Waits for a signal, however long it takes. Raises "wait for an event failed".
    void wait();

private:
    std::unique_ptr<platform::event> handle;
};

} // namespace basic

namespace qpthr {

/// A lock that one thread at a time holds, as basic::critical_section, for callers that use it through its
/// virtual functions.
class HARBOR6_API QpMutex {
public:
    /// `name` is null: the lock belongs to this process alone, and a name has no effect.
    explicit QpMutex(const char* name);
    QpMutex(const QpMutex&) = delete;
    QpMutex& operator=(const QpMutex&) = delete;
    virtual ~QpMutex();

    /// Waits until no other thread holds the lock. The holder may lock again, and unlocks as often.
    virtual void lock();
    /// Called by the holder only.
    virtual void unlock();

private:
    basic::critical_section section;
};

} // namespace qpthr

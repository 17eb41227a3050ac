#pragma once

#include "outside/groundwork/export.h"

#include <memory>

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

#pragma once

#include "outside/groundwork/export.h"

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

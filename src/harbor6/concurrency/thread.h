#pragma once

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <memory>

namespace basic {

/// Something to run on a thread. Nobody owns or destroys one through this interface.
class HARBOR6_API runnable {
public:
    virtual void run() = 0;

protected:
    ~runnable() = default;
};

} // namespace basic

namespace platform {
struct worker;
}

namespace basic {

class runnable;

/// Runs a runnable once on a thread of its own and carries what it throws to the thread that joins it. A
/// plain member of its owner, who alone calls it, in this order: start, join, raise, release; then it can
/// start again.
///
/// empty --start--> running --the run ends--> ended --release--> empty
///
/// Neither the runnable nor this object may go while the run is on: join comes first. Starting and joining
/// costs a few microseconds, as the platform keeps ended threads for the next start. Every failure is a
/// basic::exception.
class HARBOR6_API thread {
public:
    thread();
    thread(const thread&) = delete;
    thread& operator=(const thread&) = delete;
    /// As release(). Doesn't wait.
    ~thread();

    /// Begins to run `work`, which stays the caller's. Raises "the thread is already running" if a run has
    /// not been released, "cannot create a thread", and, with the run already on, "cannot set thread
    /// priority".
    void start(basic::runnable* work);
    /// Waits for the end of the run, if there is one, however long it takes. Raises "cannot join a thread".
    void join();
    /// Raises a copy of what the run left behind, if anything, and keeps it. One thread in the process raises
    /// at a time. Call it after join().
    void raise();
    /// Forgets what the run left behind and gives the thread back.
    void release();

    /// Above the platform's normal priority, or below it; 0 leaves it alone. Looked at by start().
    std::int32_t priority = 0;

private:
    static void enter(void* self) noexcept;
    void keep(const cloneable_exception& failure) noexcept;
    void keep_unknown() noexcept;

    basic::runnable* runnable = nullptr;
    platform::worker* handle = nullptr;
    /// Written by the worker at most once, before it ends, and read by the owner after join(): no lock.
    std::unique_ptr<cloneable_exception> exception;
    /// Stands in for a failure that there is no memory to copy.
    std::unique_ptr<cloneable_exception> reserve;
};

} // namespace basic

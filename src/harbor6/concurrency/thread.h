#pragma once

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <memory>

namespace platform {
struct worker;
}

namespace basic {

/// Something to run on a thread. Never owned or destroyed through this interface.
class HARBOR6_API runnable {
public:
    /// What it throws reaches the thread that joins the run, see thread::raise().
    virtual void run() = 0;

protected:
    ~runnable() = default;
};

/// Runs a runnable once on another thread and carries what it throws to the thread that joins it. It is a
/// plain member of its owner; one thread at a time, the owner's, calls it, in this order: start, join, raise,
/// release; then it can start again.
///
/// empty --start--> running --the run ends--> ended --release--> empty
///
/// The runnable and this object must live until the run has ended: join before destroying either. Starting
/// and joining costs a few microseconds, as the platform keeps ended threads for the next start. Every
/// failure is a basic::exception.
class HARBOR6_API thread {
public:
    thread();
    thread(const thread&) = delete;
    thread& operator=(const thread&) = delete;
    /// As release(); doesn't wait.
    ~thread();

    /// Begins to run `work`, which the caller keeps owning. Raises "the thread is already running" if a run
    /// has not been released, "cannot create a thread", or "cannot set thread priority"; in the last case the
    /// run has begun and must be joined.
    void start(basic::runnable* work);
    /// Runs `work` on the calling thread before it returns, and keeps what it throws, for raise(). It takes
    /// the place of start() and join() where the caller has nothing to do meanwhile. Raises "the thread is
    /// already running" as start() does, and basic::bad_alloc.
    void run_here(basic::runnable* work);
    /// Waits until the run has ended, however long it takes; returns at once if there is none. What the run
    /// wrote is then visible. Raises "cannot join a thread".
    void join();
    /// After join(): raises a copy of the exception that ended the run, if any, and keeps the original. An
    /// exception outside the tree became basic::thread_exception, lack of memory basic::bad_alloc;
    /// basic::cancel_exception counts as a normal end. One thread in the process raises at a time.
    void raise();
    /// Drops the exception of the run and returns the thread to the pool. Doesn't wait.
    void release();

    /// The difference to the platform's normal priority, for the next start(); 0 leaves it normal.
    std::int32_t priority = 0;

private:
    void prepare(basic::runnable* work);
    static void enter(void* self) noexcept;
    void keep(const cloneable_exception& failure) noexcept;
    void keep_unknown() noexcept;

    basic::runnable* runnable = nullptr;
    platform::worker* handle = nullptr;
    /// Written by the worker at most once, before it ends, and read by the owner after join(): no lock.
    std::unique_ptr<cloneable_exception> exception;
    /// Replaces an exception that can't be copied for lack of memory.
    std::unique_ptr<cloneable_exception> reserve;
};

} // namespace basic

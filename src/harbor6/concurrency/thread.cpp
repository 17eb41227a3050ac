#include "harbor6/concurrency/thread.h"

#include "harbor6/concurrency/synchronization.h"
#include "harbor6/groundwork/platform.h"

#include <new>
#include <utility>

namespace basic {

namespace {

constexpr const char* out_of_memory = "std::bad_alloc";

/// Held while a stored exception is raised, anywhere in the process.
critical_section& raising() {
    static critical_section section;
    return section;
}

/// Makes the lock free in a forked child, even if a thread of the parent held it.
[[maybe_unused]] const bool renewed_in_children = [] {
    platform::call_in_forked_child([] { new (&raising()) critical_section; });
    return true;
}();

} // namespace

thread::thread() = default;

thread::~thread() {
    release();
}

void thread::prepare(basic::runnable* work) {
    if (handle != nullptr)
        throw basic::exception("the thread is already running");
    runnable = work;
    if (!reserve)
        reserve.reset(new (std::nothrow) bad_alloc(out_of_memory));
}

void thread::start(basic::runnable* work) {
    prepare(work);
    if (reserve)
        handle = platform::start_worker(enter, this);
    if (handle == nullptr)
        throw basic::exception("cannot create a thread");
    if (priority != 0 && !platform::set_worker_priority(*handle, priority))
        throw basic::exception("cannot set thread priority");
}

void thread::run_here(basic::runnable* work) {
    prepare(work);
    if (!reserve)
        throw bad_alloc(out_of_memory);
    enter(this);
}

void thread::join() {
    if (handle != nullptr && !platform::join_worker(*handle))
        throw basic::exception("cannot join a thread");
}

void thread::raise() {
    const basic::scoped_lock lock(raising());
    if (exception)
        exception->raise();
}

void thread::release() {
    exception.reset();
    if (handle != nullptr)
        platform::close_worker(std::exchange(handle, nullptr));
}

void thread::enter(void* self) noexcept {
    auto& owner = *static_cast<thread*>(self);
    try {
        owner.runnable->run();
    } catch (const std::bad_alloc&) {
        owner.keep(bad_alloc(out_of_memory));
    } catch (const cancel_exception&) {
    } catch (const cloneable_exception& failure) {
        owner.keep(failure);
    } catch (...) {
        owner.keep_unknown();
    }
}

void thread::keep_unknown() noexcept {
    try {
        exception = std::make_unique<thread_exception>("unknown thread error");
    } catch (...) {
        exception = std::move(reserve);
    }
}

void thread::keep(const cloneable_exception& failure) noexcept {
    try {
        exception = failure.clone();
    } catch (...) {
        exception = std::move(reserve);
    }
}

} // namespace basic

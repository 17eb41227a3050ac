#include "harbor6/groundwork/platform.h"

#include "harbor6/groundwork/platform_wait.h"

#include <csignal>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr unsigned parking_places = 8;

// What a worker's state word says. The thread makes `ended` of any; the holder of the handle makes `awaited`
// of `running` before it sleeps, and `detached` of any when it gives the handle back. Whoever comes second of
// `ended` and `detached` gives the thread to the pool.
constexpr std::uint32_t running = 0;
constexpr std::uint32_t awaited = 1;
constexpr std::uint32_t ended = 2;
constexpr std::uint32_t detached = 3;

} // namespace

struct worker {
    void (*entry)(void*) = nullptr;
    void* argument = nullptr;
    std::atomic<std::uint32_t> state{running};
    patience joining;
    event next_run{true};           ///< the parked thread sleeps on this
    bool dismissed = false;         ///< read after next_run: there is no next run
    bool changed = false;           ///< its priority is no longer normal
    unsigned generation = 0;        ///< of the process that made the thread
    worker* next = nullptr;         ///< the pool's: the thread to collect, or the one parked below
    std::atomic<pid_t> identity{0}; ///< what the kernel calls the thread; 0 until it runs
    pthread_t thread{};
};

namespace {

/// The threads between two runs. A thread that is told to end is put at the head of a chain first, and
/// collects the one behind it as its last act: so all that are on their way out are collected with the head.
class pool {
public:
    worker* take() noexcept;
    void put(worker& idle) noexcept;
    worker* behind(worker& leaver) noexcept;
    void close() noexcept;

    void before_fork() noexcept { lock.lock(); }
    void after_fork() noexcept { lock.unlock(); }
    void begin_again() noexcept;

    unsigned generation = 0; ///< how many forks lie between this process and the one that loaded the library

private:
    std::mutex lock;
    worker* parked = nullptr;
    worker* leaving = nullptr;
    unsigned count = 0;
    bool closed = false;
};

constinit pool workers;
static_assert(std::is_trivially_destructible_v<pool>,
              "a run that outlasts the library's end may still use it");

void collect(worker* gone) noexcept {
    if (gone == nullptr)
        return;
    pthread_join(gone->thread, nullptr);
    delete gone;
}

void dismiss(worker& idle) noexcept {
    idle.dismissed = true;
    idle.next_run.signal();
}

worker* pool::take() noexcept {
    const std::lock_guard guard(lock);
    worker* top = parked;
    if (top != nullptr) {
        parked = top->next;
        top->next = nullptr;
        --count;
    }
    return top;
}

void pool::put(worker& idle) noexcept {
    {
        const std::lock_guard guard(lock);
        if (count < parking_places && !idle.changed && !closed) {
            idle.next = parked;
            parked = &idle;
            ++count;
            return;
        }
        idle.next = leaving;
        leaving = &idle;
    }
    dismiss(idle);
}

worker* pool::behind(worker& leaver) noexcept {
    const std::lock_guard guard(lock);
    return std::exchange(leaver.next, nullptr);
}

/// Ends the parked threads and waits until they and those on their way out are gone.
void pool::close() noexcept {
    worker* chains[2];
    {
        const std::lock_guard guard(lock);
        chains[0] = std::exchange(parked, nullptr);
        chains[1] = std::exchange(leaving, nullptr);
        count = 0;
        closed = true;
    }
    for (worker* idle = chains[0]; idle != nullptr;) {
        worker* const below = idle->next;
        dismiss(*idle);
        idle = below;
    }
    for (worker* head : chains)
        collect(head);
}

/// In a forked child, which has none of the threads: forgets them.
void pool::begin_again() noexcept {
    for (worker* head : {parked, leaving}) {
        while (head != nullptr)
            delete std::exchange(head, head->next);
    }
    parked = leaving = nullptr;
    count = 0;
    ++generation;
    lock.unlock();
}

void end_run(worker& self) noexcept {
    // Order: release, so that the joiner sees what the run wrote; acquire for what a closer did to the
    // handle.
    switch (self.state.exchange(ended, std::memory_order_acq_rel)) {
    case awaited:
        wake(self.state, 1); // to no effect if another run has begun by now: its joiner looks again
        break;
    case detached:
        workers.put(self);
        break;
    default:
        break;
    }
}

void* thread_main(void* parameter) {
    worker& self = *static_cast<worker*>(parameter);
    self.identity.store(static_cast<pid_t>(syscall(SYS_gettid)), std::memory_order_relaxed);
    do {
        self.entry(self.argument);
        end_run(self);
        while (!self.next_run.wait())
            sched_yield();
    } while (!self.dismissed);
    collect(workers.behind(self));
    return nullptr;
}

/// Makes the thread, with all signals blocked: they are for the host's threads.
bool create(worker& fresh) noexcept {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int failure = pthread_create(&fresh.thread, nullptr, thread_main, &fresh);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return failure == 0;
}

/// Ties the pool to the life of the library.
struct lifetime {
    lifetime() noexcept {
        pthread_atfork([] { workers.before_fork(); }, [] { workers.after_fork(); },
                       [] { workers.begin_again(); });
    }
    lifetime(const lifetime&) = delete;
    lifetime& operator=(const lifetime&) = delete;
    ~lifetime() { workers.close(); }
} const life;

} // namespace

// Requires: nothing. Guarantees: the run sees what the caller wrote.
// Order: the signal of next_run, or the making of the thread, publishes entry, argument and state.
worker* start_worker(void (*entry)(void*), void* argument) noexcept {
    worker* chosen = workers.take();
    if (chosen != nullptr) {
        chosen->entry = entry;
        chosen->argument = argument;
        chosen->state.store(running, std::memory_order_relaxed);
        chosen->next_run.signal();
        return chosen;
    }
    chosen = new (std::nothrow) worker;
    if (chosen == nullptr)
        return nullptr;
    chosen->entry = entry;
    chosen->argument = argument;
    chosen->generation = workers.generation;
    if (!create(*chosen)) {
        delete chosen;
        return nullptr;
    }
    return chosen;
}

// Requires: the handle's only holder. Guarantees: the run has ended and what it wrote is seen.
// Order: acquire, against the release in end_run.
bool join_worker(worker& handle) noexcept {
    if (handle.generation != workers.generation)
        return false;
    const auto is_over = [&] { return handle.state.load(std::memory_order_acquire) == ended; };
    if (handle.joining.spin(is_over))
        return true;
    std::uint32_t seen = running;
    handle.state.compare_exchange_strong(seen, awaited, std::memory_order_relaxed);
    bool slept = true;
    while (!is_over() && slept)
        slept = sleep_while(handle.state, awaited);
    return is_over();
}

bool set_worker_priority(worker& handle, std::int32_t priority) noexcept {
    constexpr std::int32_t highest = 20;
    constexpr std::int32_t lowest = -19;
    if (priority < lowest || priority > highest)
        return false;
    while (handle.identity.load(std::memory_order_relaxed) == 0)
        sched_yield();
    const auto identity = static_cast<id_t>(handle.identity.load(std::memory_order_relaxed));
    handle.changed = setpriority(PRIO_PROCESS, identity, -priority) == 0;
    return handle.changed;
}

// Requires: the handle's only holder. Guarantees: the thread goes back to the pool when its run has ended.
// Order: acquire and release, as the pool hands the thread to somebody else.
void close_worker(worker* handle) noexcept {
    if (handle->generation != workers.generation)
        delete handle;
    else if (handle->state.exchange(detached, std::memory_order_acq_rel) == ended)
        workers.put(*handle);
}

void call_in_forked_child(void (*renew)()) noexcept {
    pthread_atfork(nullptr, nullptr, renew);
}

} // namespace platform

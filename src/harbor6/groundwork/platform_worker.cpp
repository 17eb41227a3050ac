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

constexpr unsigned most_parked = 8; // threads kept for later runs

// The states of a worker. The thread changes any state to `ended`. The holder of the handle changes `running`
// to `awaited` before it sleeps, and any state to `detached` when it closes the handle. Of `ended` and
// `detached`, the side that sets the second one returns the thread to the pool.
constexpr std::uint32_t running = 0;
constexpr std::uint32_t awaited = 1;
constexpr std::uint32_t ended = 2;
constexpr std::uint32_t detached = 3;

} // namespace

struct worker {
    void (*entry)(void*) = nullptr;
    void* argument = nullptr;
    std::atomic<std::uint32_t> state{running};
    spin_policy joining;
    event next_run{true};           ///< the parked thread sleeps on this
    bool told_to_exit = false;      ///< read after next_run: there is no next run
    bool changed = false;           ///< its priority is no longer normal
    unsigned generation = 0;        ///< of the process that made the thread
    worker* next = nullptr;         ///< in the pool: the thread to join, or the one parked below
    std::atomic<pid_t> identity{0}; ///< the kernel's number of the thread; 0 until it runs
    pthread_t thread{};
};

namespace {

/// The threads between two runs. A thread that is told to exit first becomes the head of the chain `exiting`,
/// and joins the thread behind it before it exits; so joining the head joins all of them.
class pool {
public:
    worker* take() noexcept;
    void put(worker& idle) noexcept;
    worker* take_next(worker& exiting_thread) noexcept;
    void close() noexcept;

    void before_fork() noexcept { lock.lock(); }
    void after_fork() noexcept { lock.unlock(); }
    void forget_all() noexcept;

    unsigned generation = 0; ///< number of forks between the process that loaded the library and this one

private:
    std::mutex lock;
    worker* parked = nullptr;
    worker* exiting = nullptr;
    unsigned count = 0;
    bool closed = false;
};

constinit pool workers;
static_assert(std::is_trivially_destructible_v<pool>, "a run that outlasts the library may still use it");

void join_and_delete(worker* exited) noexcept {
    if (exited == nullptr)
        return;
    pthread_join(exited->thread, nullptr);
    delete exited;
}

void tell_to_exit(worker& idle) noexcept {
    idle.told_to_exit = true;
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
        if (count < most_parked && !idle.changed && !closed) {
            idle.next = parked;
            parked = &idle;
            ++count;
            return;
        }
        idle.next = exiting;
        exiting = &idle;
    }
    tell_to_exit(idle);
}

worker* pool::take_next(worker& exiting_thread) noexcept {
    const std::lock_guard guard(lock);
    return std::exchange(exiting_thread.next, nullptr);
}

/// Tells the parked threads to exit and waits until these and the exiting ones have exited.
void pool::close() noexcept {
    worker* chains[2];
    {
        const std::lock_guard guard(lock);
        chains[0] = std::exchange(parked, nullptr);
        chains[1] = std::exchange(exiting, nullptr);
        count = 0;
        closed = true;
    }
    for (worker* idle = chains[0]; idle != nullptr;) {
        worker* const below = idle->next;
        tell_to_exit(*idle);
        idle = below;
    }
    for (worker* head : chains)
        join_and_delete(head);
}

/// In a forked child, where none of the threads exists: frees their records.
void pool::forget_all() noexcept {
    for (worker* head : {parked, exiting}) {
        while (head != nullptr)
            delete std::exchange(head, head->next);
    }
    parked = exiting = nullptr;
    count = 0;
    ++generation;
    lock.unlock();
}

void end_run(worker& self) noexcept {
    // Order: release, so that the joiner sees what the run wrote; acquire for changes made by the thread
    // that closed the handle.
    switch (self.state.exchange(ended, std::memory_order_acq_rel)) {
    case awaited:
        wake(self.state, 1); // if another run has begun by now, its joiner only tests again
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
    } while (!self.told_to_exit);
    join_and_delete(workers.take_next(self));
    return nullptr;
}

/// Creates the thread, with all signals blocked: they are for the host's threads.
bool create(worker& fresh) noexcept {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int failure = pthread_create(&fresh.thread, nullptr, thread_main, &fresh);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return failure == 0;
}

/// Of the calling thread; 0 if the platform doesn't tell.
std::uintptr_t lowest_stack_address() noexcept {
    pthread_attr_t about;
    if (pthread_getattr_np(pthread_self(), &about) != 0)
        return 0;
    void* lowest = nullptr;
    std::size_t size = 0;
    const int failure = pthread_attr_getstack(&about, &lowest, &size);
    pthread_attr_destroy(&about);
    return failure == 0 ? reinterpret_cast<std::uintptr_t>(lowest) : 0;
}

/// Registers the fork handlers at load and closes the pool at unload.
struct lifetime {
    lifetime() noexcept {
        pthread_atfork([] { workers.before_fork(); }, [] { workers.after_fork(); },
                       [] { workers.forget_all(); });
    }
    lifetime(const lifetime&) = delete;
    lifetime& operator=(const lifetime&) = delete;
    ~lifetime() { workers.close(); }
} const life;

} // namespace

// Requires: nothing. Guarantees: the run sees what the caller wrote.
// Order: the signal of next_run, or the creation of the thread, publishes entry, argument and state.
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

// Requires: the handle's only holder. Guarantees: the run has ended and what it wrote is visible.
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
    const bool set = setpriority(PRIO_PROCESS, identity, -priority) == 0;
    handle.changed = handle.changed || set;
    return set;
}

// Requires: the handle's only holder. Guarantees: the thread returns to the pool when its run has ended.
// Order: acquire and release, as the pool hands the thread to another caller.
void close_worker(worker* handle) noexcept {
    if (handle->generation != workers.generation)
        delete handle;
    else if (handle->state.exchange(detached, std::memory_order_acq_rel) == ended)
        workers.put(*handle);
}

std::uint64_t stack_left() noexcept {
    static thread_local const std::uintptr_t lowest = lowest_stack_address();
    return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - lowest;
}

void call_in_forked_child(void (*renew)()) noexcept {
    pthread_atfork(nullptr, nullptr, renew);
}

} // namespace platform

#include "harbor6/groundwork/platform.h"

#include "harbor6/groundwork/platform_wait.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <linux/futex.h>
#include <new>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr std::uint32_t most_failures = 8; // then one wait in 256 spins

constexpr std::uint32_t signalled = 1;
constexpr std::uint32_t sleeper = 2;

static_assert(sizeof(std::atomic<std::uint32_t>) == 4 && std::atomic<std::uint32_t>::is_always_lock_free,
              "the kernel reads the word itself");

long futex(const std::atomic<std::uint32_t>& word, int operation, std::uint32_t value) noexcept {
    return syscall(SYS_futex, &word, operation | FUTEX_PRIVATE_FLAG, value, nullptr, nullptr, 0);
}

bool has_several_processors() noexcept {
    cpu_set_t set;
    return sched_getaffinity(0, sizeof set, &set) != 0 || CPU_COUNT(&set) > 1;
}

const bool several_processors = has_several_processors();

} // namespace

bool sleep_while(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept {
    return futex(word, FUTEX_WAIT, value) == 0 || errno == EAGAIN || errno == EINTR;
}

bool wake(const std::atomic<std::uint32_t>& word, int count) noexcept {
    return futex(word, FUTEX_WAKE, static_cast<std::uint32_t>(count)) >= 0 || errno == EFAULT;
}

std::uint64_t now() noexcept {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count());
}

void relax() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    __asm__ volatile("isb");
#endif
}

bool spin_policy::should_spin() noexcept {
    const auto left = spinless_waits.load(std::memory_order_relaxed);
    if (left > 0)
        spinless_waits.store(left - 1, std::memory_order_relaxed);
    return left == 0 && several_processors;
}

void spin_policy::record(bool succeeded) noexcept {
    const auto before = failures.load(std::memory_order_relaxed);
    const auto after = succeeded ? before - std::min(before, 1u) : std::min(before + 2, most_failures);
    failures.store(after, std::memory_order_relaxed);
    spinless_waits.store((1u << after) - 1, std::memory_order_relaxed);
}

std::unique_ptr<event> event::create(bool auto_reset) noexcept {
    return std::unique_ptr<event>(new (std::nothrow) event(auto_reset));
}

event::event(bool clears) noexcept : auto_reset(clears) {}

// Requires: nothing. Guarantees: a wait that is active or begins next returns, and sees what this thread
// wrote. Order: release. It is a read-modify-write even if the word is already signalled, so that the wait
// that takes the signal reads this value or a later one of its release sequence.
bool event::signal() noexcept {
    const int waiters_to_wake = auto_reset ? 1 : INT_MAX;
    const auto before = word.fetch_or(signalled, std::memory_order_release);
    const bool asleep = (before & signalled) == 0 && before >= sleeper;
    return !asleep || wake(word, waiters_to_wake);
}

// Requires: no wait that must not miss an earlier signal. Guarantees: the next wait needs a new signal.
// Order: relaxed, as no data is handed over; a read-modify-write keeps the count of sleepers.
bool event::reset() noexcept {
    word.fetch_and(~signalled, std::memory_order_relaxed);
    return true;
}

// Order: acquire, against the release of the signal that is taken.
bool event::take() noexcept {
    auto seen = word.load(std::memory_order_acquire);
    while ((seen & signalled) != 0) {
        if (!auto_reset || word.compare_exchange_weak(seen, seen & ~signalled, std::memory_order_acquire))
            return true;
    }
    return false;
}

// Requires: nothing. Guarantees: returns once there is a signal that no other wait has taken.
// Order: a sleeper is counted in the word that the signal is set in, so the signaller's read-modify-write
// either precedes the count and keeps this thread from sleeping, or finds it and wakes; acquire as in take().
bool event::wait() noexcept {
    if (spinning.spin([this] { return take(); }))
        return true;
    word.fetch_add(sleeper, std::memory_order_relaxed);
    bool taken = take();
    for (bool slept = true; !taken && slept; taken = take()) {
        const auto seen = word.load(std::memory_order_relaxed);
        slept = (seen & signalled) != 0 || sleep_while(word, seen);
    }
    word.fetch_sub(sleeper, std::memory_order_relaxed);
    return taken;
}

} // namespace platform

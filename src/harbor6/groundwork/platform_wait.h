#pragma once

// What events and workers share: sleeping on a word of memory, and the spin before it. Only platform*.cpp
// include this.

#include "harbor6/groundwork/platform.h"

namespace platform {

/// Sleeps while `word` holds `value`. May return early for no reason, so the caller tests again. False if the
/// platform refuses to wait.
bool sleep_while(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;
/// Wakes up to `count` threads that sleep on `word`. Doesn't read the word, which may no longer exist. False
/// if the platform refuses.
bool wake(const std::atomic<std::uint32_t>& word, int count) noexcept;

/// A steady clock, in nanoseconds.
std::uint64_t now() noexcept;
/// Tells the processor that the caller spins.
void relax() noexcept;

constexpr std::uint64_t longest_spin = 200000; // nanoseconds: the time a slow decoder takes for a block

template<class Ready>
bool spin_policy::spin(Ready ready) noexcept {
    if (ready())
        return true;
    if (!should_spin())
        return false;
    const auto began = now();
    bool is_ready = false;
    do {
        for (int round = 0; round < 16 && !is_ready; ++round) {
            relax();
            is_ready = ready();
        }
    } while (!is_ready && now() - began < longest_spin);
    record(is_ready);
    return is_ready;
}

} // namespace platform

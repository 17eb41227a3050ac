#pragma once

// What events and workers share: sleeping on a word of memory. Only for the files platform*.cpp.

#include "harbor6/groundwork/platform.h"

namespace platform {

/// Sleeps while `word` holds `value`, and may wake for no reason; the caller looks again. False if the
/// platform refuses to wait.
bool sleep_while(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;
/// Wakes up to `count` threads that sleep on `word`. Reads nothing there, so the word may be gone already.
bool wake(const std::atomic<std::uint32_t>& word, int count) noexcept;

/// Steady nanoseconds; and a hint to the processor that the caller spins.
std::uint64_t now() noexcept;
void relax() noexcept;

constexpr std::uint64_t longest_spin = 200000; // nanoseconds: what a slow decoder takes for a block

template<class Ready>
bool patience::spin(Ready ready) noexcept {
    if (ready())
        return true;
    if (!willing())
        return false;
    const auto began = now();
    bool yes = false;
    do {
        for (int round = 0; round < 16 && !yes; ++round) {
            relax();
            yes = ready();
        }
    } while (!yes && now() - began < longest_spin);
    learn(yes);
    return yes;
}

} // namespace platform

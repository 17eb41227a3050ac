#pragma once

// What events and workers share: sleeping on a word of memory. Only for the files platform*.cpp.

#include "outside/groundwork/platform.h"

namespace platform {

/// Sleeps while `word` holds `value`, and may wake for no reason; the caller looks again. False if the
/// platform refuses to wait.
bool sleep_while(const std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept;
/// Wakes up to `count` threads that sleep on `word`. Reads nothing there, so the word may be gone already.
bool wake(const std::atomic<std::uint32_t>& word, int count) noexcept;

/// Steady nanoseconds; a hint to the processor that the caller spins; whether spinning can help at all.
std::uint64_t now() noexcept;
void relax() noexcept;
bool several_processors() noexcept;

template<class Ready>
bool patience::spin(Ready ready, std::uint64_t& began) noexcept {
    if (ready())
        return true;
    began = now();
    if (!several_processors())
        return false;
    const auto limit = budget.load(std::memory_order_relaxed);
    do {
        for (int round = 0; round < 16; ++round) {
            relax();
            if (ready()) {
                learn(began);
                return true;
            }
        }
    } while (now() - began < limit);
    return false;
}

} // namespace platform

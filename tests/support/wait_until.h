#pragma once

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace support {

/// Whether `condition` comes true within ten seconds.
template<class Condition>
bool wait_until(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::yield();
    }
    return true;
}

inline unsigned threads_of_this_process() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<unsigned>(std::distance(begin(tasks), end(tasks)));
}

} // namespace support

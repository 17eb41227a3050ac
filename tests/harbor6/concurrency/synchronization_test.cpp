#include "harbor6/concurrency/synchronization.h"

#include <atomic>
#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <thread>

TEST(Event, RemembersASignalUntilAWaitOrResetTakesItAndReleasesOneWaiterOrAll) {
    for (const bool auto_reset : {true, false}) {
        SCOPED_TRACE(auto_reset ? "auto reset" : "manual reset");
        basic::event event(auto_reset);
        event.signal();
        event.signal();
        auto_reset ? event.wait() : event.reset();
        std::atomic<int> passed = 0;
        std::thread waiters[4];
        for (auto& waiter : waiters)
            waiter = std::thread([&] {
                event.wait();
                ++passed;
            });
        for (int before = 0; before < 4; before = passed) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            EXPECT_EQ(passed, before);
            event.signal();
            while (passed < (auto_reset ? before + 1 : 4))
                std::this_thread::yield();
        }
        for (auto& waiter : waiters)
            waiter.join();
    }
}

TEST(Mutex, IsFreeOnceItsHolderHasUnlockedItAsOftenAsLocked) {
    qpthr::QpMutex mutex(nullptr);
    mutex.lock();
    mutex.lock();
    const auto other = std::async(std::launch::async, [&] { const std::lock_guard guard(mutex); });
    mutex.unlock();
    EXPECT_EQ(other.wait_for(std::chrono::milliseconds(2)), std::future_status::timeout);
    mutex.unlock();
    other.wait();
}

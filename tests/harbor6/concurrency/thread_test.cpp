#include "harbor6/concurrency/thread.h"

#include "harbor6/concurrency/synchronization.h"
#include "support/job.h"
#include "support/refusal.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <tuple>
#include <typeinfo>
#include <vector>

namespace {

/// Whether `condition` becomes true within ten seconds.
bool wait_until(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    return condition();
}

std::ptrdiff_t threads_of_this_process() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

/// Class and text of what `body` throws, or "nothing".
std::string thrown_by(const std::function<void()>& body) {
    try {
        body();
    } catch (const std::exception& failure) {
        return std::string(typeid(failure).name()) + ' ' + failure.what();
    }
    return "nothing";
}

/// Can't be copied for lack of memory.
struct uncopyable final : basic::exception {
    using basic::exception::exception;
    std::unique_ptr<basic::cloneable_exception> clone() const override { throw std::bad_alloc(); }
};

TEST(Thread, RaisesInTheJoinerWhatTheRunThrew) {
    const auto no_memory = [] { throw basic::bad_alloc("std::bad_alloc"); };
    const auto unknown = [] { throw basic::thread_exception("unknown thread error"); };
    const auto damage = [] { throw basic::algorithm_exception("bad"); };
    const auto checksum = [] { throw format::crc_exception("bad", "a::b"); };
    const auto refusal = [] { throw format::exception("bad", "a::b"); };
    const std::tuple<const char*, std::function<void()>, std::function<void()>> cases[] = {
        {"nothing", [] {}, [] {}},
        {"cancelled", [] { throw basic::cancel_exception("stop"); }, [] {}},
        {"no memory", [] { throw std::bad_alloc(); }, no_memory},
        {"array too long", [] { throw std::bad_array_new_length(); }, no_memory},
        {"no memory for the copy", [] { throw uncopyable("x"); }, no_memory},
        {"an int", [] { throw 7; }, unknown},
        {"outside the tree", [] { throw std::runtime_error("no"); }, unknown},
        {"basic branch", damage, damage},
        {"qpthr branch", refusal, refusal},
        {"a checksum becomes a plain refusal", checksum, refusal},
    };
    for (const auto& [name, body, expected] : cases) {
        SCOPED_TRACE(name);
        support::job work(body);
        basic::thread thread;
        thread.start(&work);
        thread.join();
        EXPECT_EQ(thrown_by([&] { thread.raise(); }), thrown_by(expected));
        thread.release();
        thread.run_here(&work);
        EXPECT_EQ(thrown_by([&] { thread.raise(); }), thrown_by(expected));
    }
}

TEST(Thread, StartsAgainAfterReleaseOnly) {
    basic::thread thread;
    thread.join();
    thread.raise();
    int runs = 0;
    support::job failing([&] {
        ++runs;
        throw basic::exception("again");
    });
    for (int i = 1; i <= 300; ++i) {
        thread.start(&failing);
        for (int twice = 0; twice < 2; ++twice) {
            EXPECT_EQ(support::refusal_of([&] { thread.start(&failing); }), "the thread is already running");
            thread.join();
            EXPECT_EQ(support::refusal_of([&] { thread.raise(); }), "again");
        }
        EXPECT_EQ(runs, i);
        thread.release();
        thread.raise();
    }
}

TEST(Thread, RefusesAnImpossiblePriorityAfterTheRunBegan) {
    bool ran = false;
    support::job work([&] { ran = true; });
    basic::thread thread;
    thread.priority = 1000;
    EXPECT_EQ(support::refusal_of([&] { thread.start(&work); }), "cannot set thread priority");
    thread.join();
    EXPECT_TRUE(ran);
}

TEST(Thread, CannotBeJoinedInAForkedChildWhereItDoesntExist) {
    support::job work([] {});
    basic::thread thread;
    thread.start(&work);
    const auto text = [&] { return support::refusal_of([&] { thread.join(); }); };
    EXPECT_EXIT(std::_Exit(text() == "cannot join a thread" ? 7 : 0), testing::ExitedWithCode(7), "");
    thread.join();
}

TEST(Thread, KeepsOnlyAFewThreadsWhenManyHaveEnded) {
    constexpr unsigned many = 40;
    constexpr std::ptrdiff_t few = 8 + 2; // those kept, this one, and one that a sanitizer may add
    for (const bool released_first : {false, true}) {
        basic::event go(false);
        std::atomic<unsigned> ended = 0;
        support::job work([&] {
            go.wait();
            ++ended;
        });
        std::vector<basic::thread> threads(many);
        for (auto& thread : threads)
            thread.start(&work);
        EXPECT_GT(threads_of_this_process(), std::ptrdiff_t{many});
        for (auto& thread : threads)
            if (released_first)
                thread.release();
        go.signal();
        for (auto& thread : threads) {
            thread.join();
            thread.release();
        }
        EXPECT_TRUE(wait_until([&] { return ended == many; }));
        EXPECT_TRUE(wait_until([] { return threads_of_this_process() <= few; }));
    }
}

/// Notices if two are raised at the same time.
struct raised_alone final : basic::exception {
    explicit raised_alone(std::atomic<int>& raising) : exception("raised_alone"), together(raising) {}
    std::unique_ptr<basic::cloneable_exception> clone() const override {
        return std::make_unique<raised_alone>(together);
    }
    void raise() const override {
        const bool alone = ++together == 1;
        std::this_thread::yield();
        --together;
        throw basic::exception(alone ? "alone" : "together");
    }

    std::atomic<int>& together;
};

TEST(Thread, RaisesOneStoredExceptionAtATime) {
    std::atomic<int> raising = 0, alone = 0;
    const auto join_many = [&] {
        support::job work([&] { throw raised_alone(raising); });
        for (int i = 0; i < 500; ++i) {
            basic::thread thread;
            thread.start(&work);
            thread.join();
            alone += support::refusal_of([&] { thread.raise(); }) == "alone";
        }
    };
    std::thread other(join_many);
    join_many();
    other.join();
    EXPECT_EQ(alone, 1000);
}

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

} // namespace

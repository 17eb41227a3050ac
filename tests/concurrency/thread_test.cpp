#include "concurrency/thread.h"

#include "concurrency/runnable.h"

#include <functional>
#include <gtest/gtest.h>
#include <new>

namespace {

class job final : public basic::runnable {
public:
    explicit job(std::function<void()> body) : work(std::move(body)) {}
    void run() override { work(); }

private:
    std::function<void()> work;
};

TEST(Thread, RunsAndStartsAgain) {
    basic::thread thread;
    int runs = 0;
    job count([&] { ++runs; });
    for (int i = 0; i < 1000; ++i) {
        thread.start(&count);
        thread.join();
        thread.raise();
        thread.release();
    }
    EXPECT_EQ(runs, 1000);
}

} // namespace

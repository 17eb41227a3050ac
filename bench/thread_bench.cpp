#include "harbor6/concurrency/pipe.h"
#include "harbor6/concurrency/synchronization.h"
#include "harbor6/concurrency/thread.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

// What a worker costs. The figure to look at is the median of a round; the mean also counts the rounds in
// which the machine did something else.

namespace {

using clock = std::chrono::steady_clock;

constexpr unsigned block = 32768;

class idle_job final : public basic::runnable {
public:
    void run() override {}
};

/// Works for so many nanoseconds, as a decoder would, and then writes one block into a pipe.
class block_writer final : public basic::runnable {
public:
    block_writer(nio::output& sink, std::int64_t nanoseconds)
        : target(sink), length(nanoseconds), data(block) {}

    void run() override {
        const auto end = clock::now() + length;
        while (clock::now() < end)
            continue;
        target.write(data.data(), block);
        target.finish();
    }

    nio::output& target;
    std::chrono::nanoseconds length;
    std::vector<char> data;
};

/// Runs rounds, each timed alone, and reports their median and ninety-ninth percentile in microseconds.
template<class Round>
void measure(benchmark::State& state, std::int64_t less, Round round) {
    std::vector<double> times;
    for (auto _ : state) {
        const auto begin = clock::now();
        round();
        times.push_back(std::chrono::duration<double, std::micro>(clock::now() - begin).count());
    }
    std::sort(times.begin(), times.end());
    const double work = static_cast<double>(less) / 1000;
    state.counters["median_us"] = times[times.size() / 2] - work;
    state.counters["p99_us"] = times[times.size() * 99 / 100] - work;
}

void start_and_join(benchmark::State& state) {
    basic::thread thread;
    idle_job job;
    measure(state, 0, [&] {
        thread.start(&job);
        thread.join();
        thread.raise();
        thread.release();
    });
}

/// The same with a pause between rounds, in microseconds, in which the parked thread may fall asleep.
void start_and_join_after_pause(benchmark::State& state) {
    basic::thread thread;
    idle_job job;
    const std::chrono::microseconds pause(state.range(0));
    measure(state, state.range(0) * 1000, [&] {
        const auto end = clock::now() + pause;
        while (clock::now() < end)
            continue;
        thread.start(&job);
        thread.join();
        thread.raise();
        thread.release();
    });
}

void platform_thread(benchmark::State& state) {
    measure(state, 0, [] { std::thread([] {}).join(); });
}

/// A block through a pipe from a worker that first works for so many microseconds. Given without that work.
void block_by_worker(benchmark::State& state) {
    nio::pipe pipe(65536);
    basic::thread thread;
    block_writer writer(pipe, state.range(0) * 1000);
    std::vector<char> target(block + 1);
    measure(state, state.range(0) * 1000, [&] {
        pipe.reset();
        thread.start(&writer);
        unsigned got = 0;
        while (const unsigned received = pipe.read(target.data(), block + 1))
            got += received;
        if (got != block)
            state.SkipWithError("bytes are missing");
        pipe.abort();
        thread.join();
        thread.raise();
        thread.release();
    });
}

void block_by_memcpy(benchmark::State& state) {
    std::vector<char> source(block);
    std::vector<char> target(block);
    measure(state, 0, [&] {
        std::memcpy(target.data(), source.data(), block);
        benchmark::ClobberMemory();
    });
}

} // namespace

BENCHMARK(start_and_join)->UseRealTime();
BENCHMARK(start_and_join_after_pause)->Arg(10)->Arg(50)->Arg(1000)->UseRealTime();
BENCHMARK(platform_thread)->UseRealTime();
BENCHMARK(block_by_memcpy)->UseRealTime();
BENCHMARK(block_by_worker)->Arg(0)->Arg(10)->Arg(30)->Arg(100)->Arg(300)->UseRealTime();

BENCHMARK_MAIN();

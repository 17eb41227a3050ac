#include "formats/cab/cab_checksum.h"

#include <benchmark/benchmark.h>
#include <string>

namespace {

/// The checksum alone over one run of bytes, from a word's start or from inside one.
void checksum_of_a_run(benchmark::State& state) {
    const std::string bytes(static_cast<std::size_t>(state.range(0)) + 1, 'x');
    format::cab::checksum sum;
    sum.shift = static_cast<std::uint32_t>(state.range(1));
    for (auto _ : state) {
        sum.update(bytes.data() + (sum.shift != 0), static_cast<unsigned>(state.range(0)));
        benchmark::DoNotOptimize(sum.value);
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK(checksum_of_a_run)
    ->ArgNames({"bytes", "shift"})
    ->Args({64, 0})
    ->Args({1024, 0})
    ->Args({32768, 0})
    ->Args({32768, 8})
    ->Args({1 << 25, 0});

} // namespace

BENCHMARK_MAIN();

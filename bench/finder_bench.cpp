#include "formats/cab/cab_format.h"
#include "harbor6/model/archive_finder.h"
#include "harbor6/model/classifier.h"
#include "harbor6/posix/file_input.h"
#include "support/sample_data.h"
#include "support/temporary_folder.h"

#include <benchmark/benchmark.h>
#include <random>

namespace {

constexpr std::size_t size = std::size_t{256} << 20;

std::string bytes_of(int kind) {
    if (kind == 0)
        return sample_data::programs(size);
    if (kind == 1)
        return sample_data::source_text(size);
    std::string bytes(size, kind == 2 ? '\0' : 'M');
    if (kind == 2)
        std::generate(bytes.begin(), bytes.end(),
                      [random = std::mt19937()]() mutable { return static_cast<char>(random()); });
    return bytes;
}

/// The search of a file in the page cache that contains no archive: programs (0), text (1), random bytes (2),
/// the first byte of the signature (3).
void search_of_a_file(benchmark::State& state) {
    const support::temporary_folder folder;
    support::write_file(folder / "file", bytes_of(static_cast<int>(state.range(0))));
    harbor6::Classifier formats;
    formats.addFormat(*new harbor6::cab::Format(nullptr));
    for (auto _ : state) {
        host::file_input file(host::open_input((folder / "file").string()), "the file");
        harbor6::FoundArchive found;
        benchmark::DoNotOptimize(harbor6::ArchiveFinder(formats, file).next(found));
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

BENCHMARK(search_of_a_file)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();

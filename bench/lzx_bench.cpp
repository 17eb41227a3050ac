// Decodes the LZX folders of cabinets from memory to memory, each time beside zlib's inflate on the same
// content at level 6, and reports the ratio of the best times.
//
//   lzx_bench [CABINET...] [--benchmark_...]
//
// Without cabinets it makes two of its own. HARBOR_BENCH_CABINETS may name further ones, separated by ':'.

#include "codec/lzx/lzx_decompressor.h"
#include "harbor6/stream/array_input.h"
#include "harbor6/stream/output.h"
#include "support/lzx_cabinets.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>
#include <sstream>
#include <zlib.h>

namespace {

class memory_output : public stream::output {
public:
    explicit memory_output(std::string& target) : bytes(target) {}

    void write(const char* buffer, unsigned length) override {
        std::memcpy(bytes.data() + count, buffer, length);
        count += length;
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return count; }

private:
    std::string& bytes;
    std::size_t count = 0;
};

struct subject {
    std::string name;
    std::uint32_t window_size = 0;
    std::vector<support::lzx_frame> frames;
    std::string coded;
    std::string deflated;
    std::string output; ///< of every run, touched before the first
};

bool decode(subject& s) {
    stream::array_input input({s.coded.data(), static_cast<unsigned>(s.coded.size())}, 0);
    memory_output output(s.output);
    algorithm::lzx::decompressor decoder(s.window_size);
    for (const auto& frame : s.frames)
        if (decoder.process_block(input, output, frame.bytes.size(), frame.size) != frame.size)
            return false;
    return true;
}

z_stream prepared(std::string& source, std::string& target) {
    z_stream z{};
    z.next_in = reinterpret_cast<Bytef*>(source.data());
    z.avail_in = static_cast<uInt>(source.size());
    z.next_out = reinterpret_cast<Bytef*>(target.data());
    z.avail_out = static_cast<uInt>(target.size());
    return z;
}

bool inflate_all(subject& s) {
    z_stream z = prepared(s.deflated, s.output);
    inflateInit2(&z, -15);
    const bool ended = inflate(&z, Z_FINISH) == Z_STREAM_END;
    inflateEnd(&z);
    return ended && z.avail_out == 0;
}

subject load(const std::string& path) {
    subject s;
    s.name = path.substr(path.rfind('/') + 1);
    auto cabinet = sample_data::lzx_read_cabinet(path);
    auto& folder = cabinet.folders.at(0);
    s.window_size = 1u << folder.window_bits;
    s.frames = std::move(folder.frames);
    std::size_t size = 0;
    for (const auto& frame : s.frames) {
        s.coded += frame.bytes;
        size += frame.size;
    }
    s.output.resize(size);
    if (!decode(s))
        throw std::runtime_error("cannot decode " + path);
    std::string content = s.output;
    s.deflated.resize(compressBound(content.size()) + 1024);
    z_stream z = prepared(content, s.deflated);
    deflateInit2(&z, 6, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    deflate(&z, Z_FINISH);
    s.deflated.resize(z.total_out);
    deflateEnd(&z);
    if (!inflate_all(s) || s.output != content)
        throw std::runtime_error("cannot inflate " + path);
    return s;
}

template<class Work>
double seconds(benchmark::State& state, Work work) {
    // Of the processor, so that a busy machine counts for less.
    const std::clock_t start = std::clock();
    if (!work())
        state.SkipWithError("decoding failed");
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void beside_inflate(benchmark::State& state, subject& s) {
    double best_inflate = 1e9;
    double best_lzx = 1e9;
    for (auto _ : state) {
        best_inflate = std::min(best_inflate, seconds(state, [&] { return inflate_all(s); }));
        const double lzx = seconds(state, [&] { return decode(s); });
        best_lzx = std::min(best_lzx, lzx);
        state.SetIterationTime(lzx);
    }
    const double megabytes = static_cast<double>(s.output.size()) / 1e6;
    state.counters["lzx_MB/s"] = megabytes / best_lzx;
    state.counters["inflate_MB/s"] = megabytes / best_inflate;
    state.counters["ratio"] = best_inflate / best_lzx;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::vector<std::string> paths(argv + 1, argv + argc);
    if (paths.empty())
        paths = {sample_data::lzx_cabinet("text"), sample_data::lzx_cabinet("programs")};
    if (const char* more = std::getenv("HARBOR_BENCH_CABINETS")) {
        std::istringstream list(more);
        for (std::string path; std::getline(list, path, ':');)
            paths.push_back(path);
    }
    std::vector<subject> subjects;
    for (const auto& path : paths)
        subjects.push_back(load(path));
    for (auto& s : subjects)
        benchmark::RegisterBenchmark(s.name.c_str(),
                                     [&s](benchmark::State& state) { beside_inflate(state, s); })
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(7);
    benchmark::RunSpecifiedBenchmarks();
}

// The Deflate decoder against libdeflate and zlib's inflate, on 100 MB of source text and of programs.
//
//   deflate_bench [MSZIP-CABINET...] [--benchmark_...]
//
// "alone" and "shared": the decoder from memory to memory, on blocks of 32 KiB without history (libdeflate
// takes none) and with that of the blocks before, as a cabinet has them. "folder": the latter through data
// record, checksum, adaptor and block output into a sink, against a plain loop of inflate calls; cabinets
// named here or in HARBOR_BENCH_CABINETS, separated by ':', join in with their first folder.
// "best" is the time to compare; run with --benchmark_repetitions=7
// --benchmark_enable_random_interleaving=true.

#include "codec/deflate/deflate_decompressor.h"
#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_records.h"
#include "support/memory_streams.h"
#include "support/sample_data.h"
#include "support/zlib_inflate.h"
#include "support/zlib_streams.h"

#include <benchmark/benchmark.h>
#include <libdeflate.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <list>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace {

constexpr std::size_t block_size = 32768;

struct corpus {
    std::string data;
    std::vector<std::string> alone;  ///< one stream for each block, none knows of another
    std::vector<std::string> shared; ///< with the history of a folder
};

const corpus& corpus_of(bool text) {
    static const auto make = [](std::string data) {
        corpus made{std::move(data), {}, {}};
        for (std::size_t i = 0; i < made.data.size(); i += block_size)
            made.alone.push_back(
                zlib_streams::compress(std::string_view(made.data).substr(i, block_size), 6));
        made.shared = zlib_streams::compress_blocks(made.data, 6);
        return made;
    };
    constexpr std::size_t size = 100'000'000;
    if (text) {
        static const corpus made = make(sample_data::source_text(size));
        return made;
    }
    static const corpus made = make(sample_data::programs(size));
    return made;
}

/// Deflate data in memory, one block after the other, the way the driver positions its stream.
class block_input : public nio::input {
public:
    void take(std::string_view next_block) {
        block = next_block;
        next = 0;
    }
    unsigned read(char* buffer, unsigned length) override {
        const std::size_t received = std::min<std::size_t>(length, block.size() - next);
        std::memcpy(buffer, block.data() + next, received);
        next += received;
        return static_cast<unsigned>(received);
    }
    std::uint64_t tell() const override { return next; }
    bool seek(std::uint64_t value) override {
        next = static_cast<std::size_t>(value);
        return true;
    }

private:
    std::string_view block;
    std::size_t next = 0;
};

class buffer_output : public nio::output {
public:
    explicit buffer_output(char* target) : next(target) {}
    void write(const char* buffer, unsigned length) override {
        std::memcpy(next, buffer, length);
        next += length;
    }

    char* next;
};

void expect_same(const std::string& got, const std::string& wanted) {
    if (got != wanted)
        throw std::runtime_error("a decoder's answer is wrong");
}

template<class DecodeAll>
void measure(benchmark::State& state, const std::string& wanted, DecodeAll decode_all) {
    std::string out(wanted.size(), '\0');
    for (auto _ : state)
        decode_all(out.data());
    expect_same(out, wanted);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(wanted.size()));
}

void alone_ours(benchmark::State& state, bool text, bool shared) {
    const corpus& input = corpus_of(text);
    measure(state, input.data, [&](char* to) {
        block_input in;
        buffer_output out(to);
        deflate::decompressor decoder(in, out);
        decoder.rewind = true;
        for (const auto& block : shared ? input.shared : input.alone) {
            in.take(block);
            decoder.run();
        }
    });
}

void alone_zlib(benchmark::State& state, bool text, bool shared) {
    const corpus& input = corpus_of(text);
    measure(state, input.data, [&](char* to) {
        rivals::zlib_inflate decoder;
        char* const begin = to;
        for (const auto& block : shared ? input.shared : input.alone) {
            const std::size_t history =
                shared ? std::min<std::size_t>(block_size, static_cast<std::size_t>(to - begin)) : 0;
            to += decoder.decode(block, {to - history, history}, to, block_size);
        }
    });
}

void alone_libdeflate(benchmark::State& state, bool text) {
    const corpus& input = corpus_of(text);
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decoder(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    measure(state, input.data, [&](char* to) {
        for (const auto& block : input.alone) {
            std::size_t received = 0;
            if (libdeflate_deflate_decompress(decoder.get(), block.data(), block.size(), to, block_size,
                                              &received) != LIBDEFLATE_SUCCESS)
                throw std::runtime_error("libdeflate");
            to += received;
        }
    });
}

/// One MSZIP folder: its data blocks as stored in `bytes` from `offset` on.
struct folder {
    std::string bytes;
    std::uint64_t offset = 0;
    std::uint32_t block_count = 0;
    std::vector<std::string_view> streams;
    std::size_t size = 0; ///< decoded
};

void put16(std::string& to, std::size_t value) {
    to += static_cast<char>(value & 0xFF);
    to += static_cast<char>(value >> 8);
}

std::size_t get16(std::string_view from, std::size_t at) {
    return static_cast<unsigned char>(from[at]) | std::size_t{static_cast<unsigned char>(from[at + 1])} << 8;
}

/// Finds the blocks, whose records of 8 bytes hold a checksum and both sizes.
folder with_streams(folder made) {
    std::size_t at = static_cast<std::size_t>(made.offset);
    for (std::uint32_t i = 0; i < made.block_count; ++i) {
        const std::size_t size = get16(made.bytes, at + 4);
        made.size += get16(made.bytes, at + 6);
        made.streams.push_back(std::string_view(made.bytes).substr(at + 10, size - 2));
        at += 8 + size;
    }
    return made;
}

folder folder_of(const corpus& input) {
    folder made;
    for (const auto& block : input.shared) {
        made.bytes.append(4, '\0');
        put16(made.bytes, block.size() + 2);
        put16(made.bytes, std::min(block_size, input.data.size() - made.block_count++ * block_size));
        made.bytes += "CK" + block;
    }
    return made;
}

/// The first folder of a cabinet without reserve areas.
folder folder_of(const std::string& path) {
    folder made;
    made.bytes = sample_data::file_bytes(path);
    support::seekable_input in(made.bytes);
    format::cab::archive_header header;
    header.read(in, true);
    format::cab::folder_header record;
    record.read(in, true);
    made.offset = record.data_offset;
    made.block_count = record.block_count;
    return made;
}

/// Through record, checksum, adaptor, worker, pipe and block output, into the sink.
void folder_ours(benchmark::State& state, const folder& input) {
    support::seekable_input in(input.bytes);
    format::cab::folder_header record;
    record.compression = 1;
    record.block_count = input.block_count;
    for (auto _ : state) {
        in.seek(input.offset);
        harbor6::cab::block_output out;
        out.entries.resize(1);
        out.entries[0].size = input.size;
        out.start();
        if (format::cab::item_reader(&record).process(in, out) != input.size)
            throw std::runtime_error("a folder's size is wrong");
        out.finish();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.size));
}

void folder_zlib(benchmark::State& state, const folder& input) {
    std::string out(input.size + block_size, '\0');
    for (auto _ : state) {
        rivals::zlib_inflate decoder;
        char* to = out.data();
        for (const auto& stream : input.streams) {
            const auto history = std::min<std::size_t>(block_size, static_cast<std::size_t>(to - out.data()));
            to += decoder.decode(stream, {to - history, history}, to, block_size);
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.size));
}

template<class Function, class... Arguments>
void add(const std::string& name, Function function, const Arguments&... arguments) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) { function(state, arguments...); })
        ->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime()
        ->UseRealTime()
        ->ComputeStatistics(
            "best", [](const std::vector<double>& all) { return *std::min_element(all.begin(), all.end()); });
}

void add_folder(const std::string& name, folder found) {
    static std::list<folder> all;
    all.push_back(std::move(found));
    const folder* kept = &(all.back() = with_streams(std::move(all.back())));
    add("folder/" + name + "/ours", [kept](benchmark::State& state) { folder_ours(state, *kept); });
    add("folder/" + name + "/zlib", [kept](benchmark::State& state) { folder_zlib(state, *kept); });
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const bool text : {true, false}) {
        const std::string kind = text ? "text" : "programs";
        for (const bool shared : {false, true}) {
            const std::string name = (shared ? "shared/" : "alone/") + kind;
            add(name + "/ours", alone_ours, text, shared);
            add(name + "/zlib", alone_zlib, text, shared);
        }
        add("alone/" + kind + "/libdeflate", alone_libdeflate, text);
        add_folder(kind, folder_of(corpus_of(text)));
    }
    std::vector<std::string> cabinets(argv + 1, argv + argc);
    if (const char* more = std::getenv("HARBOR_BENCH_CABINETS"))
        for (std::istringstream paths(more); std::getline(paths, cabinets.emplace_back(), ':');)
            ;
    std::erase(cabinets, "");
    for (const auto& path : cabinets)
        if (path.find("mszip") != std::string::npos)
            add_folder(path.substr(path.rfind('/') + 1), folder_of(path));
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

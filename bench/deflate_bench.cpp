// The Deflate decoder against libdeflate and zlib's inflate, on source text and on programs.
//
// "alone": the decoder from memory to memory, on blocks of 32 KiB without history (libdeflate knows no preset
// history), and on blocks that share theirs, as a cabinet has them. "folder": those through the adaptor, its
// worker and the pipe into a sink. Bytes per second are those of the decoded data.
//
// Run interleaved: --benchmark_enable_random_interleaving=true --benchmark_repetitions=5

#include "codec/deflate_decompressor.h"
#include "codec/flate_adaptor.h"
#include "stream/infinite_output.h"
#include "stream/input.h"
#include "support/yardstick.h"
#include "support/zlib_inflate.h"
#include "support/zlib_streams.h"

#include <benchmark/benchmark.h>
#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

constexpr std::size_t block_size = 32768;

struct yard {
    std::string data;
    std::vector<std::string> alone;  ///< one stream for each block, none knows of another
    std::vector<std::string> shared; ///< with the history of a folder
};

const yard& yard_of(bool text) {
    static const auto make = [](std::string data) {
        yard made{std::move(data), {}, {}};
        for (std::size_t i = 0; i < made.data.size(); i += block_size)
            made.alone.push_back(
                zlib_streams::compress(std::string_view(made.data).substr(i, block_size), 6));
        made.shared = zlib_streams::compress_blocks(made.data, 6);
        return made;
    };
    constexpr std::size_t size = 100'000'000;
    if (text) {
        static const yard made = make(yardstick::source_text(size));
        return made;
    }
    static const yard made = make(yardstick::programs(size));
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
        const std::size_t came = std::min<std::size_t>(length, block.size() - next);
        std::memcpy(buffer, block.data() + next, came);
        next += came;
        return static_cast<unsigned>(came);
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
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * wanted.size()));
}

void alone_ours(benchmark::State& state, bool text, bool shared) {
    const yard& input = yard_of(text);
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
    const yard& input = yard_of(text);
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
    const yard& input = yard_of(text);
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> decoder(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    measure(state, input.data, [&](char* to) {
        for (const auto& block : input.alone) {
            std::size_t came = 0;
            if (libdeflate_deflate_decompress(decoder.get(), block.data(), block.size(), to, block_size,
                                              &came) != LIBDEFLATE_SUCCESS)
                throw std::runtime_error("libdeflate");
            to += came;
        }
    });
}

/// All blocks on end behind one stream::input that can seek, as a cabinet's storage can.
class storage : public stream::input {
public:
    explicit storage(const std::string& all) : whole(all) {}

    using stream::input::read;
    bool seek(std::uint64_t value) override {
        at = value;
        return true;
    }

protected:
    unsigned _read(char* buffer, unsigned length) override {
        const std::size_t came = whole.copy(buffer, length, at);
        at += came;
        return static_cast<unsigned>(came);
    }
    int _read() override { return at < whole.size() ? static_cast<unsigned char>(whole[at++]) : -1; }
    std::uint64_t _tell() const override { return at; }

private:
    const std::string& whole;
    std::uint64_t at = 0;
};

void folder_ours(benchmark::State& state, bool text) {
    const yard& input = yard_of(text);
    std::string all;
    for (const auto& block : input.shared)
        all += block;
    for (auto _ : state) {
        storage in(all);
        stream::infinite_output out;
        algorithm::flate_adaptor::decompressor decoder(in, 15, true);
        for (std::size_t i = 0; i < input.shared.size(); ++i) {
            decoder.start();
            decoder.copy_to(out);
            decoder.finish();
        }
        if (out.tell() != input.data.size())
            throw std::runtime_error("a folder's size is wrong");
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * input.data.size()));
}

} // namespace

BENCHMARK_CAPTURE(alone_ours, text, true, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_libdeflate, text, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_zlib, text, true, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_ours, programs, false, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_libdeflate, programs, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_zlib, programs, false, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_ours, text_shared, true, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(folder_ours, text, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_zlib, text_shared, true, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_ours, programs_shared, false, true)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(folder_ours, programs, false)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(alone_zlib, programs_shared, false, true)->Unit(benchmark::kMillisecond)->UseRealTime();

BENCHMARK_MAIN();

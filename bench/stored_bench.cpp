// A stored folder with checksums, out of one file into another, beside a plain copy of the same file in
// pieces of 64 KiB.

#include "formats/cab/cab_item_reader.h"
#include "formats/cab/cab_records.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"
#include "support/cabinet_writer.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr unsigned piece = 65536;
constexpr std::size_t block_payload = 32768;
constexpr std::uint32_t block_count = 6400; // 200 MiB

/// Steps back in its own buffer for a push-back, as a host's storage stream does.
class file_input : public stream::input {
public:
    explicit file_input(std::FILE* source) : file(source), buffer(4 * std::size_t{piece}) {}

    using stream::input::read;

    void unread(const char* /*bytes*/, unsigned length) override { next -= length; }

protected:
    unsigned _read(char* target, unsigned length) override {
        unsigned done = 0;
        while (done < length && (next < end || refill())) {
            const auto count = std::min<std::size_t>(length - done, end - next);
            std::memcpy(target + done, buffer.data() + next, count);
            next += count;
            done += static_cast<unsigned>(count);
        }
        return done;
    }
    int _read() override {
        char byte;
        return _read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
    }
    std::uint64_t _tell() const override { return before + next; }

private:
    /// Keeps as many bytes as can be handed back.
    bool refill() {
        const auto kept = std::min<std::size_t>(end, piece);
        std::memmove(buffer.data(), buffer.data() + end - kept, kept);
        before += end - kept;
        next = kept;
        end = kept + std::fread(buffer.data() + kept, 1, buffer.size() - kept, file);
        return next < end;
    }

    std::FILE* file;
    std::vector<char> buffer;
    std::size_t next = 0, end = 0;
    std::uint64_t before = 0;
};

class file_output : public stream::output {
public:
    explicit file_output(std::FILE* target) : file(target) {}

    using stream::output::write;

    void write(const char* bytes, unsigned length) override {
        position += std::fwrite(bytes, 1, length, file);
    }
    void write(char byte) override { write(&byte, 1); }
    std::uint64_t tell() const override { return position; }

private:
    std::FILE* file;
};

struct files {
    files() {
        std::string payload(block_payload, '\0');
        for (std::size_t i = 0; i < payload.size(); ++i)
            payload[i] = static_cast<char>(i * i >> 7);
        const auto block = support::bytes_of(support::block_record{.payload = payload});
        for (std::uint32_t i = 0; i < block_count; ++i)
            std::fwrite(block.data(), 1, block.size(), from);
        std::fflush(from);
        std::setvbuf(to, nullptr, _IONBF, 0);
    }
    ~files() {
        std::fclose(from);
        std::fclose(to);
    }
    void rewind() {
        std::rewind(from);
        std::rewind(to);
    }

    std::FILE* from = std::tmpfile();
    std::FILE* to = std::tmpfile();
};

files& prepared() {
    static files both;
    return both;
}

void plain_copy(benchmark::State& state) {
    auto& both = prepared();
    std::vector<char> buffer(piece);
    for (auto _ : state) {
        both.rewind();
        while (const auto received = std::fread(buffer.data(), 1, buffer.size(), both.from))
            std::fwrite(buffer.data(), 1, received, both.to);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(block_count * block_payload));
}

void stored_folder(benchmark::State& state) {
    auto& both = prepared();
    format::cab::folder_header folder;
    folder.block_count = block_count;
    for (auto _ : state) {
        both.rewind();
        file_input input(both.from);
        file_output output(both.to);
        format::cab::item_reader(&folder).process(input, output);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(block_count * block_payload));
}

BENCHMARK(plain_copy)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(stored_folder)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

BENCHMARK_MAIN();

// Both loops of the LZX decoder on arbitrary frames: bytes and results have to agree.
//
// Input: a byte for the window, then frames: two bytes each for compressed and uncompressed size, and the
// bytes.

#include "codec/lzx/lzx_decompressor.h"
#include "harbor6/stream/array_input.h"
#include "harbor6/stream/output.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace {

class text_output : public stream::output {
public:
    void write(const char* buffer, unsigned length) override { bytes.append(buffer, length); }
    void write(char byte) override { bytes += byte; }
    std::uint64_t tell() const override { return bytes.size(); }

    std::string bytes;
};

struct run {
    run(const std::uint8_t* data, std::size_t size, bool exact_only) {
        stream::array_input input({reinterpret_cast<const char*>(data), static_cast<unsigned>(size)}, 0);
        const int window = input.read();
        algorithm::lzx::decompressor decoder(1u << (15 + (window & 0x7F) % 7));
        if (exact_only)
            decoder.use_exact_loop_only();
        std::int64_t result = 0;
        while (result >= 0 && input.tell() < size && output.bytes.size() < 1u << 22) {
            unsigned sizes[2];
            for (unsigned& each : sizes) {
                const int low = input.read();
                const int high = input.read();
                each = static_cast<unsigned>(low & 0xFF) | static_cast<unsigned>(high & 0xFF) << 8;
            }
            result = decoder.process_block(input, output, sizes[0], sizes[1]);
            results.push_back(result);
        }
    }

    text_output output;
    std::vector<std::int64_t> results;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 5)
        return 0;
    const run exact(data, size, true);
    const run fast(data, size, false);
    if (exact.results != fast.results || exact.output.bytes != fast.output.bytes)
        std::abort();
    return 0;
}

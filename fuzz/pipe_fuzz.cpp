// The pipe between two threads under a schedule that the input chooses: how large the ring is, the sizes of
// the writes and reads, where either side gives way to the other, and where the reader stops. Every byte that
// is read is the byte that was written.

#include "harbor6/concurrency/pipe.h"
#include "support/job.h"

#include <cstdlib>
#include <string>
#include <thread>

namespace {

/// The steps of one side: each byte of the input gives the size of a write or read, and whether to give way
/// to the other thread first.
struct schedule {
    template<class Act>
    void run(Act act) const {
        for (unsigned i = first; i < size; i += 2) {
            if (data[i] & 0x80)
                std::this_thread::yield();
            if (!act(data[i] & 0x7F ? data[i] & 0x7Fu : 1000u))
                return;
        }
    }

    const std::uint8_t* data;
    std::size_t size;
    unsigned first;
};

char byte_at(std::uint64_t place) {
    return static_cast<char>(place * 2654435761u >> 13);
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3)
        return 0;
    nio::pipe pipe(1u << (1 + data[0] % 10));
    for (unsigned round = 0; round < 1 + data[0] / 64u; ++round) {
        pipe.reset();
        std::uint64_t written = 0;
        support::job writer([&] {
            std::string piece;
            schedule{data, size, 1}.run([&](unsigned length) {
                piece.resize(length);
                for (unsigned i = 0; i < length; ++i)
                    piece[i] = byte_at(written + i);
                written += length;
                if (length == 1)
                    pipe.put(piece[0]);
                else
                    pipe.write(piece.data(), length);
                return true;
            });
            pipe.finish();
        });
        basic::thread thread;
        thread.start(&writer);
        std::uint64_t taken = 0;
        bool ended = false;
        std::string piece;
        schedule{data, size, 2}.run([&](unsigned length) {
            piece.resize(length);
            unsigned got = 0;
            if (length == 1) {
                const int byte = pipe.get();
                got = byte >= 0;
                piece[0] = static_cast<char>(byte);
            } else {
                got = pipe.read(piece.data(), length);
            }
            for (unsigned i = 0; i < got; ++i)
                require(piece[i] == byte_at(taken + i));
            taken += got;
            ended = got < length;
            return !ended;
        });
        pipe.abort();
        thread.join();
        thread.raise();
        thread.release();
        require(taken <= written && (!ended || taken == written));
    }
    return 0;
}

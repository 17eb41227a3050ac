#include "harbor6/concurrency/pipe.h"

#include "harbor6/concurrency/thread.h"
#include "support/job.h"
#include "support/refusal.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <thread>

namespace {

/// 0 to `most`.
unsigned roll(std::mt19937& dice, unsigned most) {
    return std::uniform_int_distribution<unsigned>(0, most)(dice);
}

char byte_at(std::uint64_t place) {
    return static_cast<char>(place * 2654435761u >> 13);
}

TEST(Pipe, AcceptsPowersOfTwoOnlyAndCannotSeek) {
    for (const unsigned capacity : {0u, 3u, 6u, 65535u, 65537u})
        EXPECT_EQ(support::refusal_of([&] { nio::pipe pipe(capacity); }), "pipe size must be a power of 2");
    nio::pipe pipe(4);
    pipe.write("ab", 2);
    static_cast<nio::input&>(pipe).set_tell(5);
    EXPECT_TRUE(!pipe.seek(0) && pipe.get() == 'a');
    EXPECT_EQ(std::pair(pipe.tell(), pipe.channel::size()), std::pair(std::uint64_t{0}, ~std::uint64_t{0}));
}

/// Writes `total` bytes in pieces of random size, single bytes among them.
void write_all(nio::pipe& pipe, unsigned total, unsigned largest, unsigned seed) {
    std::mt19937 dice(seed);
    std::string piece;
    for (unsigned done = 0; done < total; done += static_cast<unsigned>(piece.size())) {
        piece.resize(std::min(roll(dice, largest), total - done));
        for (unsigned i = 0; i < piece.size(); ++i)
            piece[i] = byte_at(done + i);
        if (piece.size() == 1)
            pipe.put(piece[0]);
        else
            pipe.write(piece.data(), static_cast<unsigned>(piece.size()));
    }
    pipe.finish();
}

/// Reads in the same manner up to the end or `limit` bytes. Returns how many were right.
unsigned read_all(nio::pipe& pipe, unsigned limit, unsigned largest, unsigned seed) {
    std::mt19937 dice(seed);
    std::string piece(largest + 1, 0);
    unsigned right = 0;
    while (right < limit) {
        const unsigned wanted = std::min(1 + roll(dice, largest - 1), limit - right);
        const int byte = wanted == 1 ? pipe.get() : 0;
        piece[0] = static_cast<char>(byte);
        const unsigned got = wanted == 1 ? byte >= 0 : pipe.read(piece.data(), wanted);
        for (unsigned i = 0; i < got; ++i, ++right)
            if (piece[i] != byte_at(right))
                return right;
        if (got < wanted)
            break;
    }
    return right;
}

// Small rings switch sides at nearly every byte, and short streams end while the reader tests for data.
TEST(Pipe, DeliversEveryByteWhicheverSideEndsFirst) {
    constexpr unsigned cases[][4] = {
        // the ring, rounds, the most bytes, and the largest piece
        {2, 60, 3000, 3},         {4, 60, 5000, 9},           {16, 6000, 40, 20},     {64, 8000, 3, 3},
        {1024, 150, 60000, 4000}, {65536, 50, 200000, 70000}, {65536, 3000, 100, 50},
    };
    std::mt19937 dice(1);
    for (const auto& [capacity, rounds, most, largest] : cases) {
        nio::pipe pipe(capacity);
        basic::thread thread;
        for (unsigned round = 0; round < rounds; ++round) {
            const unsigned total = roll(dice, most), piece = largest;
            const unsigned limit = roll(dice, 3) == 0 ? roll(dice, most) : ~0u;
            support::job writer([&, seed = roll(dice, ~0u)] { write_all(pipe, total, piece, seed); });
            pipe.reset();
            thread.start(&writer);
            const unsigned right = read_all(pipe, limit, largest, roll(dice, ~0u));
            pipe.abort();
            thread.join();
            thread.raise();
            thread.release();
            ASSERT_EQ(right, std::min(limit, total)) << "capacity " << capacity << ", round " << round;
        }
    }
}

// If tried often enough, the byte and the end arrive between the reader's two loads of the pipe's state.
TEST(Pipe, LosesNoByteWrittenJustBeforeTheEnd) {
    nio::pipe pipe(16);
    std::atomic<unsigned> arrived = 0;
    std::atomic<bool> over = false;
    const auto meet = [&] { // both sides go on together
        const unsigned both = (arrived++ | 1) + 1;
        for (unsigned spins = 1; arrived < both; ++spins)
            if (spins % 256 == 0)
                std::this_thread::yield();
    };
    std::thread writer([&] {
        for (unsigned round = 0; !over; ++round) {
            meet();
            for (unsigned i = 0; i < round % 64; ++i)
                arrived.load();
            pipe.put('x');
            pipe.finish();
            meet();
        }
    });
    unsigned lost = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    while (!over) {
        pipe.reset();
        meet();
        lost += pipe.get() != 'x';
        over = std::chrono::steady_clock::now() > end;
        meet();
    }
    writer.join();
    EXPECT_EQ(lost, 0u);
}

} // namespace

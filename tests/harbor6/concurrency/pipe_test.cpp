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

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr unsigned effort = 1;
#else
constexpr unsigned effort = 2;
#endif

/// 0 to `most`.
unsigned roll(std::mt19937& dice, unsigned most) {
    return std::uniform_int_distribution<unsigned>(0, most)(dice);
}

char byte_at(std::uint64_t place) {
    return static_cast<char>(place * 2654435761u >> 13);
}

std::string content(unsigned length) {
    std::string bytes(length, 0);
    for (unsigned i = 0; i < length; ++i)
        bytes[i] = byte_at(i);
    return bytes;
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
    const auto bytes = content(total);
    for (unsigned done = 0; done < total;) {
        const unsigned piece = std::min(roll(dice, largest), total - done);
        if (piece == 1)
            pipe.put(bytes[done]);
        else
            pipe.write(bytes.data() + done, piece);
        done += piece;
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
        unsigned got = wanted;
        if (wanted == 1) {
            const int byte = pipe.get();
            piece[0] = static_cast<char>(byte);
            got = byte >= 0 ? 1 : 0;
        } else {
            got = pipe.read(piece.data(), wanted);
        }
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
    const struct {
        unsigned capacity, rounds, total, largest;
    } cases[] = {
        {2, 40, 3000, 3},         {4, 40, 5000, 9},           {16, 4000, 40, 20},     {64, 5000, 3, 3},
        {1024, 100, 60000, 4000}, {65536, 30, 200000, 70000}, {65536, 2000, 100, 50},
    };
    std::mt19937 dice(1);
    for (const auto& [capacity, rounds, most, largest] : cases) {
        nio::pipe pipe(capacity);
        basic::thread thread;
        for (unsigned round = 0; round < rounds * effort; ++round) {
            const unsigned total = roll(dice, most);
            const unsigned limit = roll(dice, 3) == 0 ? roll(dice, most) : ~0u;
            const unsigned piece = largest;
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
    std::atomic<unsigned> reader_at = 0;
    std::atomic<unsigned> writer_at = 0;
    std::atomic<bool> over = false;
    const auto meet = [](std::atomic<unsigned>& own, const std::atomic<unsigned>& other) {
        const unsigned place = ++own;
        for (unsigned spins = 1; other < place; ++spins)
            if (spins % 256 == 0)
                std::this_thread::yield();
    };
    std::thread writer([&] {
        for (unsigned round = 0; !over; ++round) {
            meet(writer_at, reader_at);
            for (unsigned i = 0; i < round % 64; ++i)
                reader_at.load();
            pipe.put('x');
            pipe.finish();
            meet(writer_at, reader_at);
        }
    });
    unsigned lost = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(300);
    while (!over) {
        pipe.reset();
        meet(reader_at, writer_at);
        lost += pipe.get() != 'x';
        over = std::chrono::steady_clock::now() > end;
        meet(reader_at, writer_at);
    }
    writer.join();
    EXPECT_EQ(lost, 0u);
}

} // namespace

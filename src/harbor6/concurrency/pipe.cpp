#include "harbor6/concurrency/pipe.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace nio {

channel::~channel() = default;

std::uint64_t channel::tell() const {
    return position;
}

bool channel::seek(std::uint64_t /*value*/) {
    return false;
}

std::uint64_t channel::size() const {
    return ~std::uint64_t{0};
}

// Why no wake-up is lost. An index that was read may be stale, so both sides may decide to sleep: the writer
// saw a full ring, the reader an empty one. Each signals the other's event before it waits on its own, and a
// signal stays until a wait takes it. Suppose both sleep for ever. Then a wait of the reader took the
// writer's last signal, and the reader tested the ring again after that: by the acquire of the wait and the
// release of the signal it saw the writer's final index, and it slept only after a later signal of its own.
// The writer took that one in turn, tested again and signalled after that. So a later signal followed the
// writer's last one, a contradiction.

namespace {

constexpr auto relaxed = std::memory_order_relaxed;
constexpr auto acquire = std::memory_order_acquire;
constexpr auto release = std::memory_order_release;

} // namespace

pipe::pipe(unsigned size) : capacity(size), buffer(new char[size]), data_event(true), space_event(true) {
    if (!std::has_single_bit(capacity))
        throw basic::exception("pipe size must be a power of 2");
    reset_events();
}

pipe::~pipe() = default;

void pipe::reset_events() {
    data_event.reset();
    space_event.signal();
}

// Requires: neither side is active, and the caller has joined the writer. Guarantees: as after construction.
// Order: relaxed; the start of the next run publishes it.
void pipe::reset() {
    write_closed.store(false, relaxed);
    read_closed.store(false, relaxed);
    read_index.store(0, relaxed);
    write_index.store(0, relaxed);
    reset_events();
}

// Requires: the reader; `from` is read_index. Guarantees: the reader may read that many bytes from there on.
// Order: acquire, against the release by the writer, which filled them before.
unsigned pipe::filled_run(unsigned from) const {
    const unsigned end = write_index.load(acquire);
    return from > end ? capacity - from : end - from;
}

// Requires: the writer; `from` is write_index. Guarantees: the writer may fill that many bytes from there on.
// Order: acquire, against the release by the reader, which copied them before.
unsigned pipe::free_run(unsigned from) const {
    const unsigned end = read_index.load(acquire);
    if (end <= from)
        return capacity - from - (end == 0 ? 1 : 0);
    return end - from - 1;
}

// Requires: one writer. Guarantees: the reader sees the bytes complete and in order.
// Order: write_index is released after the bytes are stored; read_closed is relaxed, as it hands over no
// data.
void pipe::write(const char* bytes, unsigned length) {
    unsigned to = write_index.load(relaxed);
    while (length > 0) {
        if (read_closed.load(relaxed))
            return;
        const unsigned run = std::min(free_run(to), length);
        if (run == 0) {
            data_event.signal();
            space_event.wait();
            continue;
        }
        std::memcpy(buffer.get() + to, bytes, run);
        to = (to + run) & (capacity - 1);
        write_index.store(to, release);
        bytes += run;
        length -= run;
    }
}

void pipe::put(char byte) {
    const unsigned to = write_index.load(relaxed);
    while (free_run(to) == 0) {
        if (read_closed.load(relaxed))
            return;
        data_event.signal();
        space_event.wait();
    }
    buffer[to] = byte;
    write_index.store((to + 1) & (capacity - 1), release);
}

// Requires: one reader. Guarantees: a short count means that every byte written before finish() was
// delivered. Order: write_closed is loaded (acquire) before write_index, so an empty ring with the flag set
// stays empty; in the other order the writer could write and finish in between. read_index is released after
// the bytes have been copied.
unsigned pipe::read(char* bytes, unsigned length) {
    unsigned from = read_index.load(relaxed);
    unsigned got = 0;
    while (got < length) {
        const bool last = write_closed.load(acquire);
        const unsigned run = std::min(filled_run(from), length - got);
        if (run == 0) {
            if (last)
                break;
            space_event.signal();
            data_event.wait();
            continue;
        }
        std::memcpy(bytes + got, buffer.get() + from, run);
        from = (from + run) & (capacity - 1);
        read_index.store(from, release);
        got += run;
    }
    return got;
}

int pipe::get() {
    char byte;
    return pipe::read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
}

// Requires: the writer, after its last byte. Guarantees: the reader wakes and finds the end after the data.
// Order: release, against the acquire in read().
void pipe::finish() {
    write_closed.store(true, release);
    data_event.signal();
}

// Requires: the reader. Guarantees: the writer wakes and stops waiting. Order: relaxed; the signal
// publishes it.
void pipe::abort() {
    read_closed.store(true, relaxed);
    space_event.signal();
}

} // namespace nio

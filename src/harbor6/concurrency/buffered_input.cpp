#include "harbor6/concurrency/buffered_input.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>

namespace nio {

buffered_input::buffered_input(input& source, unsigned size)
    : direct_input(&source), buffer(std::make_unique_for_overwrite<unsigned char[]>(size)), capacity(size),
      base(source.tell()) {}

buffered_input::~buffered_input() = default;

void buffered_input::drop() {
    fill = read_index = 0;
}

void buffered_input::start() {
    drop();
    base = attached()->tell();
}

void buffered_input::attach(input* source) {
    direct_input::attach(source);
    drop();
    base = source ? source->tell() : 0;
}

void buffered_input::finish() {
    if (read_index >= fill)
        return;
    const std::uint64_t unconsumed = fill - read_index;
    if (!attached()->seek(attached()->tell() - unconsumed))
        throw exception("buffered_input failed to yield unused data");
    base += read_index;
    drop();
}

void buffered_input::refill() {
    base += read_index;
    drop();
    fill = attached()->read(reinterpret_cast<char*>(buffer.get()), capacity);
}

int buffered_input::get_refilled() {
    refill();
    return fill == 0 ? -1 : buffer[read_index++];
}

unsigned buffered_input::deliver(char* target, unsigned length) {
    const unsigned count = std::min(length, fill - read_index);
    std::copy_n(buffer.get() + read_index, count, target);
    read_index += count;
    return count;
}

unsigned buffered_input::read(char* target, unsigned length) {
    if (length == 1) {
        const int byte = get();
        if (byte < 0)
            return 0;
        *target = static_cast<char>(byte);
        return 1;
    }
    unsigned delivered = deliver(target, length);
    const unsigned rest = length - delivered;
    if (rest == 0)
        return delivered;
    if (rest >= capacity >> 1) {
        base += read_index;
        drop();
        const unsigned got = attached()->read(target + delivered, rest);
        base += got;
        return delivered + got;
    }
    refill();
    return delivered + deliver(target + delivered, rest);
}

void buffered_input::set_tell(std::uint64_t value) {
    base = value - read_index;
    attached()->set_tell(base + fill);
}

bool buffered_input::seek(std::uint64_t value) {
    if (value == tell())
        return true;
    const bool moved = attached()->seek(value);
    drop();
    base = moved ? value : attached()->tell();
    return moved;
}

} // namespace nio

#include "harbor6/stream/positioned_input.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace stream {

namespace {

constexpr std::size_t window_length = 65536;

} // namespace

positioned_input::positioned_input(source delivering, std::uint64_t size)
    : bytes(std::move(delivering)), extent(size),
      window(std::make_unique_for_overwrite<char[]>(window_length)) {}

positioned_input::~positioned_input() = default;

bool positioned_input::seek(std::uint64_t value) {
    if (value > extent)
        return false;
    next = value;
    short_read = false;
    return true;
}

std::uint64_t positioned_input::size() const {
    return extent;
}

void positioned_input::unread(const char* /*bytes*/, unsigned length) {
    if (short_read)
        throw cut_short(next, "stream::positioned_input");
    next -= length;
}

void positioned_input::unread(char /*byte*/) {
    unread(nullptr, 1);
}

/// Makes the window hold the byte at `next`. False at the end.
bool positioned_input::refill() {
    if (next - window_start < window_size)
        return true;
    window_size = 0; // in case the source raises
    window_start = next;
    const auto left = std::min<std::uint64_t>(window_length, extent - std::min(next, extent));
    if (left > 0)
        window_size = std::min(bytes(next, window.get(), static_cast<std::size_t>(left)), window_length);
    return window_size > 0;
}

unsigned positioned_input::_read(char* buffer, unsigned length) {
    unsigned done = 0;
    while (done < length && refill()) {
        const auto at = static_cast<std::size_t>(next - window_start);
        const auto count = std::min<std::size_t>(length - done, window_size - at);
        std::memcpy(buffer + done, window.get() + at, count);
        done += static_cast<unsigned>(count);
        next += count;
    }
    short_read = done < length;
    return done;
}

int positioned_input::_read() {
    short_read = !refill();
    return short_read ? -1
                      : static_cast<unsigned char>(window[static_cast<std::size_t>(next++ - window_start)]);
}

std::uint64_t positioned_input::_tell() const {
    return next;
}

} // namespace stream

#include "harbor6/stream/input.h"

#include "harbor6/stream/output.h"

#include <algorithm>
#include <memory>

namespace stream {

namespace {

constexpr unsigned copy_chunk = 65536;

} // namespace

input::~input() = default;

std::uint64_t input::pushed_count() const {
    return pushed.size() - pushed_start;
}

unsigned input::read(char* buffer, unsigned length) {
    if (pushed_count() == 0)
        return _read(buffer, length);
    const auto from_pushed = static_cast<unsigned>(std::min<std::uint64_t>(length, pushed_count()));
    std::copy_n(pushed.data() + pushed_start, from_pushed, buffer);
    pushed_start += from_pushed;
    return from_pushed == length ? length : from_pushed + _read(buffer + from_pushed, length - from_pushed);
}

std::uint64_t input::tell() const {
    return _tell() - pushed_count();
}

int input::read() {
    return pushed_count() == 0 ? _read() : static_cast<unsigned char>(pushed[pushed_start++]);
}

void input::unread(const char* bytes, unsigned length) {
    if (pushed_start < length) {
        std::vector<char> grown(length + 2 * pushed_count());
        const auto start = grown.size() - pushed_count();
        std::copy(pushed.begin() + static_cast<std::ptrdiff_t>(pushed_start), pushed.end(),
                  grown.begin() + static_cast<std::ptrdiff_t>(start));
        pushed.swap(grown);
        pushed_start = start;
    }
    pushed_start -= length;
    std::copy_n(bytes, length, pushed.data() + pushed_start);
}

void input::unread(char byte) {
    unread(&byte, 1);
}

std::uint64_t input::skip(std::uint64_t count) {
    const auto from_pushed = std::min(count, pushed_count());
    pushed_start += from_pushed;
    return from_pushed == count ? count : from_pushed + _skip(count - from_pushed);
}

std::uint64_t input::copy_to(output& target) {
    const auto from_pushed = pushed_count();
    if (from_pushed > 0) {
        const auto start = pushed_start;
        pushed_start = pushed.size();
        target.write(pushed.data() + start, static_cast<unsigned>(from_pushed));
    }
    return from_pushed + _copy_to(target);
}

void input::close() {}

unsigned input::_read(char* buffer, unsigned length) {
    for (unsigned i = 0; i < length; ++i) {
        const int byte = _read();
        if (byte < 0)
            return i;
        buffer[i] = static_cast<char>(byte);
    }
    return length;
}

std::uint64_t input::_skip(std::uint64_t count) {
    char dropped[4096];
    std::uint64_t done = 0;
    while (done < count) {
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(count - done, sizeof dropped));
        const auto got = _read(dropped, wanted);
        done += got;
        if (got < wanted)
            break;
    }
    return done;
}

std::uint64_t input::_copy_to(output& target) {
    const auto chunk = std::make_unique_for_overwrite<char[]>(copy_chunk); // more than a small stack holds
    std::uint64_t total = 0;
    while (const unsigned got = _read(chunk.get(), copy_chunk)) {
        target.write(chunk.get(), got);
        total += got;
    }
    return total;
}

} // namespace stream

#include "harbor6/stream/array_input.h"

#include <algorithm>

namespace stream {

array_input::array_input(const un::array<char>& source, unsigned offset)
    : bytes(source), next(std::min(offset, source.length())) {}

array_input::~array_input() = default;

std::uint64_t array_input::size() const {
    return bytes.length();
}

unsigned array_input::advance(std::uint64_t wanted) {
    const auto count = static_cast<unsigned>(std::min<std::uint64_t>(wanted, bytes.length() - next));
    next += count;
    return count;
}

unsigned array_input::_read(char* buffer, unsigned length) {
    const char* from = bytes.begin() + next;
    const unsigned count = advance(length);
    std::copy_n(from, count, buffer);
    return count;
}

int array_input::_read() {
    return advance(1) == 1 ? static_cast<unsigned char>(bytes.begin()[next - 1]) : -1;
}

std::uint64_t array_input::_skip(std::uint64_t count) {
    return advance(count);
}

std::uint64_t array_input::_tell() const {
    return next;
}

} // namespace stream

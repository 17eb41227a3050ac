#include "harbor6/stream/memory_input.h"

#include <utility>

namespace stream {

memory_input::memory_input(std::string_view source, std::shared_ptr<const void> keeper)
    : bytes(source), owner(std::move(keeper)) {}

memory_input::~memory_input() = default;

bool memory_input::seek(std::uint64_t value) {
    if (value > bytes.size())
        return false;
    next = static_cast<std::size_t>(value);
    return true;
}

std::uint64_t memory_input::size() const {
    return bytes.size();
}

unsigned memory_input::_read(char* buffer, unsigned length) {
    const auto count = bytes.copy(buffer, length, next);
    next += count;
    return static_cast<unsigned>(count);
}

int memory_input::_read() {
    return next < bytes.size() ? static_cast<unsigned char>(bytes[next++]) : -1;
}

std::uint64_t memory_input::_tell() const {
    return next;
}

} // namespace stream

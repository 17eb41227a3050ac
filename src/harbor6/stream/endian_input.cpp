#include "harbor6/stream/endian_input.h"

#include "harbor6/groundwork/exception.h"

#include <bit>

namespace stream {

endian_input::endian_input(input& source)
    : direct_input(&source), foreign_order(std::endian::native != std::endian::little) {}

endian_input::~endian_input() = default;

int endian_input::read8() {
    return input::read();
}

little_endian_input::little_endian_input(input& source) : endian_input(source) {}

little_endian_input::~little_endian_input() = default;

std::uint64_t little_endian_input::read_bytes(unsigned count) {
    char bytes[8];
    if (read(bytes, count) != count)
        throw exception("unexpected end of stream", "stream::little_endian_input");
    std::uint64_t value = 0;
    for (unsigned i = 0; i < count; ++i)
        value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    return value;
}

std::uint16_t little_endian_input::read16() {
    return static_cast<std::uint16_t>(read_bytes(2));
}

std::uint32_t little_endian_input::read24() {
    return static_cast<std::uint32_t>(read_bytes(3));
}

std::uint32_t little_endian_input::read32() {
    return static_cast<std::uint32_t>(read_bytes(4));
}

std::uint64_t little_endian_input::read64() {
    return read_bytes(8);
}

} // namespace stream

#include "harbor6/stream/endian_input.h"

#include "harbor6/groundwork/endian.h"
#include "harbor6/groundwork/exception.h"

#include <array>
#include <bit>

namespace stream {

namespace {

/// The next `count` bytes, followed by zeros.
template<unsigned size>
std::array<char, size> take(input& source, unsigned count = size) {
    std::array<char, size> bytes{};
    if (source.read(bytes.data(), count) != count)
        throw exception("unexpected end of stream", "stream::little_endian_input");
    return bytes;
}

} // namespace

endian_input::endian_input(input& source)
    : direct_input(&source), foreign_order(std::endian::native != std::endian::little) {}

endian_input::~endian_input() = default;

int endian_input::read8() {
    return input::read();
}

little_endian_input::little_endian_input(input& source) : endian_input(source) {}

little_endian_input::~little_endian_input() = default;

std::uint16_t little_endian_input::read16() {
    return endian::load_le16(take<2>(*this).data());
}

std::uint32_t little_endian_input::read24() {
    return endian::load_le32(take<4>(*this, 3).data());
}

std::uint32_t little_endian_input::read32() {
    return endian::load_le32(take<4>(*this).data());
}

std::uint64_t little_endian_input::read64() {
    return endian::load_le64(take<8>(*this).data());
}

} // namespace stream

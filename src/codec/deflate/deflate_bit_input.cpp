#include "codec/deflate/deflate_bit_input.h"

#include <algorithm>

namespace deflate {

namespace {

constexpr std::int32_t full = 25; ///< below this count a whole byte still fits

} // namespace

bit_input::bit_input(nio::buffered_input& source) : filter_input(&source), bytes(source) {}

bit_input::~bit_input() = default;

void bit_input::start() {
    bit_buffer = reversed_buffer = 0;
    bit_count = end_count = 0;
}

void bit_input::finish() {
    consume(static_cast<unsigned>(bit_count) & 7);
}

std::uint64_t bit_input::tell() const {
    return bytes.tell() - static_cast<std::uint64_t>(bit_count / 8);
}

bool bit_input::seek(std::uint64_t /*value*/) {
    return false;
}

void bit_input::fill() {
    while (bit_count < full) {
        int byte = bytes.get();
        if (byte < 0) {
            ++end_count;
            byte = 0xFF;
        }
        bit_buffer |= static_cast<std::uint32_t>(byte) << bit_count;
        reversed_buffer = reversed_buffer << 8 | reversed_byte[static_cast<unsigned>(byte)];
        bit_count += 8;
    }
}

std::uint32_t bit_input::field(unsigned count) {
    fill();
    const std::uint32_t value = bit_buffer & ((1u << count) - 1);
    consume(count);
    return value;
}

void bit_input::consume(unsigned count) {
    bit_buffer >>= count;
    bit_count -= static_cast<std::int32_t>(count);
}

unsigned bit_input::buffered_bytes() const {
    return static_cast<unsigned>(std::max(bit_count / 8 - end_count, 0));
}

unsigned bit_input::resume(std::uint64_t word, unsigned count) {
    const unsigned returned = count < full ? 0 : (count - full) / 8;
    const unsigned kept = count - 8 * returned;
    bit_buffer = static_cast<std::uint32_t>(word & ((std::uint64_t{1} << kept) - 1));
    reversed_buffer = static_cast<std::uint32_t>(std::uint64_t{reversed_word(bit_buffer)} >> (32 - kept));
    bit_count = static_cast<std::int32_t>(kept);
    return returned;
}

} // namespace deflate

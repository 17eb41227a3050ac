#include "codec/lzx_translation.h"

#include <cstring>

namespace algorithm::lzx {

namespace {

constexpr std::uint8_t call = 0xE8;
constexpr std::size_t tail = 6;
constexpr std::size_t operand_size = 4;

std::uint32_t load(const std::uint8_t* from) {
    return static_cast<std::uint32_t>(from[0]) | static_cast<std::uint32_t>(from[1]) << 8 |
           static_cast<std::uint32_t>(from[2]) << 16 | static_cast<std::uint32_t>(from[3]) << 24;
}

void store(std::uint8_t* to, std::uint32_t value) {
    for (unsigned i = 0; i < operand_size; ++i)
        to[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

} // namespace

void translate_calls(std::uint8_t* frame, std::size_t length, std::uint32_t translation_size,
                     std::uint32_t& instruction_position) {
    const std::uint32_t first = instruction_position;
    instruction_position = first + static_cast<std::uint32_t>(length);
    if (length <= tail)
        return;

    const std::size_t stop = length - tail;
    std::uint8_t kept[tail];
    std::memcpy(kept, frame + stop, tail);
    std::memset(frame + stop, call, tail);

    // The bytes at `stop` end every search. Positions wrap at 2 to the power 32, and the comparison with the
    // last one is made after the wrap.
    const std::uint32_t end = first + static_cast<std::uint32_t>(stop);
    std::size_t at = 0;
    while (at < stop) {
        at = static_cast<std::size_t>(
            static_cast<const std::uint8_t*>(std::memchr(frame + at, call, length - at)) - frame);
        const std::uint32_t position = first + static_cast<std::uint32_t>(at);
        if (at >= stop || position >= end)
            break;
        std::uint8_t* operand = frame + at + 1;
        const std::uint32_t value = load(operand);
        if (value < translation_size)
            store(operand, value - position);
        else if (0u - value < position)
            store(operand, value + translation_size);
        at += 1 + operand_size;
    }
    std::memcpy(frame + stop, kept, tail);
}

} // namespace algorithm::lzx

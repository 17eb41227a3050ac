#include "codec/lzx/lzx_translation.h"

#include "harbor6/groundwork/endian.h"

#include <algorithm>
#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace algorithm::lzx {

namespace {

constexpr std::uint8_t call = 0xE8;
constexpr std::size_t tail = 6;
constexpr std::size_t operand_size = 4;

void store(std::uint8_t* to, std::uint32_t value) {
    for (unsigned i = 0; i < operand_size; ++i)
        to[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

constexpr std::size_t group_size = 64;
constexpr std::size_t section_size = 64 * group_size;
constexpr unsigned unconditional_entries = 3; ///< listed for each group, even if it has fewer calls
constexpr std::uint64_t last_bit = std::uint64_t{1} << (group_size - 1);

/// One bit for each of 64 bytes, set if the byte is a CALL.
std::uint64_t find_calls(const std::uint8_t* bytes) {
#if defined(__SSE2__)
    std::uint64_t set = 0;
    const __m128i calls = _mm_set1_epi8(static_cast<char>(call));
    for (unsigned i = 0; i < group_size; i += 16) {
        const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
        const int mask = _mm_movemask_epi8(_mm_cmpeq_epi8(sixteen, calls));
        set |= std::uint64_t{static_cast<std::uint32_t>(mask)} << i;
    }
    return set;
#else
    constexpr std::uint64_t low_bits = 0x7F7F7F7F7F7F7F7F;
    std::uint64_t found = 0;
    for (unsigned i = 0; i < group_size; i += 8) {
        const std::uint64_t eight = endian::load_le64(bytes + i) ^ 0xE8E8E8E8E8E8E8E8;
        // The top bit of each byte that is 0 now; then the eight bits are moved together.
        const std::uint64_t zeros = ~(((eight & low_bits) + low_bits) | eight | low_bits);
        found |= (zeros >> 7) * 0x0102040810204080 >> 56 << i;
    }
    return found;
#endif
}

/// The same for fewer than 64 bytes.
std::uint64_t find_calls_in_rest(const std::uint8_t* bytes, std::size_t length) {
    std::uint8_t group[group_size] = {};
    std::memcpy(group, bytes, length);
    return find_calls(group);
}

/// Lists the offsets of the calls in a section, or in its first `left` bytes if it has fewer, and returns
/// their number. All are listed before the first is translated, since the number in a group is hard to
/// predict. Translation changes operands only, and bytes of an operand don't count as calls.
std::size_t list_calls(const std::uint8_t* section, std::size_t left, std::uint16_t* list) {
    std::size_t count = 0;
    for (std::size_t group = 0; group < std::min(section_size, left); group += group_size) {
        std::uint64_t calls = left - group >= group_size ? find_calls(section + group)
                                                         : find_calls_in_rest(section + group, left - group);
        const auto list_lowest = [&] {
            list[count] =
                static_cast<std::uint16_t>(group + static_cast<unsigned>(std::countr_zero(calls | last_bit)));
            count += calls != 0;
            calls &= calls - 1;
        };
        for (unsigned i = 0; i < unconditional_entries; ++i)
            list_lowest();
        while (calls != 0)
            [[unlikely]] list_lowest();
    }
    return count;
}

} // namespace

void translate_calls(std::uint8_t* frame, std::size_t length, std::uint32_t translation_size,
                     std::uint32_t& instruction_position, bool published_rules) {
    const std::uint32_t border = published_rules ? 1 : 0;
    const std::uint32_t first = instruction_position;
    instruction_position = first + static_cast<std::uint32_t>(length);
    if (length <= tail)
        return;

    const std::size_t stop = length - tail;
    // The operand of a call behind `last` reaches into the tail.
    const std::size_t last = published_rules ? stop - std::min(stop, operand_size) : stop;
    std::uint8_t saved[tail];
    std::memcpy(saved, frame + stop, tail);
    std::memset(frame + stop, call, tail);

    // Positions wrap at 2 to the power 32, and the comparison with the last one is made after the wrap.
    const std::uint32_t end = first + static_cast<std::uint32_t>(stop);
    std::size_t operand_end = 0; // of the last call
    // Returns false when the scan is over.
    const auto translate = [&](std::size_t at) {
        const std::uint32_t position = first + static_cast<std::uint32_t>(at);
        if (at < operand_end)
            return true;
        if (at >= last || position >= end)
            return false;
        operand_end = at + 1 + operand_size;
        std::uint8_t* operand = frame + at + 1;
        const std::uint32_t value = endian::load_le32(operand);
        const std::uint32_t change = value < translation_size         ? 0u - position
                                     : 0u - value < position + border ? translation_size
                                                                      : 0u;
        store(operand, value + change);
        return true;
    };
    std::uint16_t calls[section_size + unconditional_entries];
    for (std::size_t section = 0; section < stop; section += section_size) {
        const std::size_t count = list_calls(frame + section, length - section, calls);
        for (std::size_t i = 0; i < count; ++i)
            if (!translate(section + calls[i])) {
                section = stop;
                break;
            }
    }
    std::memcpy(frame + stop, saved, tail);
}

} // namespace algorithm::lzx

#include "codec/lzx_fast_tables.h"

#include <algorithm>

namespace algorithm::lzx {

/// The symbols that have a code, in the order of their codes.
struct fast_tables::sorted_code {
    sorted_code(const std::uint8_t* code_lengths, unsigned symbols) : lengths(code_lengths) {
        unsigned place[maximum_code_length + 2] = {};
        for (unsigned symbol = 0; symbol < symbols; ++symbol)
            ++place[lengths[symbol] + 1];
        place[1] = 0;
        for (unsigned l = 2; l <= maximum_code_length + 1; ++l)
            place[l] += place[l - 1];
        count = place[maximum_code_length + 1];
        for (unsigned symbol = 0; symbol < symbols; ++symbol)
            if (lengths[symbol] != 0)
                order[place[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }

    const std::uint8_t* lengths;
    unsigned count;
    std::uint16_t order[maximum_main_symbols];
};

std::uint32_t fast_tables::match(unsigned slot, unsigned length, unsigned code, bool aligned_block) {
    unsigned extra = extra_bits(slot);
    std::uint32_t flag = 0;
    if (aligned_block && extra >= 3) {
        extra -= 3;
        flag = entry::aligned;
    }
    return flag | length << entry::length_shift | slot << entry::slot_shift | code << entry::code_shift |
           (code + extra);
}

bool fast_tables::build(const std::uint8_t* main_lengths, unsigned main_symbols,
                        const std::uint8_t* length_lengths, bool aligned_block) {
    const sorted_code main_code(main_lengths, main_symbols);
    if (main_code.count == 0)
        return false;
    const sorted_code length_code(length_lengths, length_symbols);
    std::uint16_t* next = length;
    for (unsigned i = 0; i < length_code.count; ++i) {
        const unsigned symbol = length_code.order[i];
        const unsigned l = length_lengths[symbol];
        if (l > length_index_bits)
            break;
        next = std::fill_n(next, 1u << (length_index_bits - l), static_cast<std::uint16_t>(l << 8 | symbol));
    }
    std::fill(next, std::end(length), length_code.count == 0 ? std::uint16_t{0} : long_code);
    fill_main(main_code, length_code, aligned_block);
    return true;
}

void fast_tables::fill_main(const sorted_code& main_code, const sorted_code& length_code,
                            bool aligned_block) {
    std::uint32_t* next = main;
    for (unsigned i = 0; i < main_code.count; ++i) {
        const unsigned symbol = main_code.order[i];
        const unsigned l = main_code.lengths[symbol];
        if (l > main_index_bits)
            break;
        const unsigned room = main_index_bits - l;
        std::uint32_t* const end = next + (1u << room);
        if (symbol < literal_symbols) {
            // Where a second literal's code fits in the index too, the entry has both.
            const std::uint32_t single =
                entry::literal | 1u << entry::count_shift | symbol << entry::first_shift | l;
            for (unsigned k = 0; k < main_code.count; ++k) {
                const unsigned second = main_code.order[k];
                const unsigned second_length = main_code.lengths[second];
                if (second_length > room)
                    break;
                const std::uint32_t both =
                    (entry::literal | 2u << entry::count_shift | symbol << entry::first_shift) +
                    (second << entry::second_shift) + l + second_length;
                next =
                    std::fill_n(next, 1u << (room - second_length), second < literal_symbols ? both : single);
            }
            next = std::fill_n(next, end - next, single);
            continue;
        }
        const unsigned slot = (symbol - literal_symbols) / headers_per_slot;
        const unsigned header = (symbol - literal_symbols) % headers_per_slot;
        if (header != long_header) {
            next = std::fill_n(next, end - next, match(slot, header + minimum_match, l, aligned_block));
            continue;
        }
        const unsigned shortest = long_header + minimum_match;
        for (unsigned k = 0; k < length_code.count; ++k) {
            const unsigned further = length_code.order[k];
            const unsigned further_length = length_code.lengths[further];
            if (further_length > room)
                break;
            next = std::fill_n(next, 1u << (room - further_length),
                               match(slot, shortest + further, l + further_length, aligned_block));
        }
        next = std::fill_n(next, end - next, entry::special | match(slot, shortest, l, aligned_block));
    }
    std::fill(next, std::end(main), entry::special);
}

} // namespace algorithm::lzx

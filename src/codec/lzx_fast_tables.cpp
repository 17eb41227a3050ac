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

bool fast_tables::build(const std::uint8_t* main_lengths, unsigned main_symbols,
                        const std::uint8_t* length_lengths, bool in_aligned) {
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
    fill_main(main_code, length_code, in_aligned);
    return true;
}

void fast_tables::fill_main(const sorted_code& main_code, const sorted_code& length_code, bool in_aligned) {
    entry::type* next = main;
    for (unsigned i = 0; i < main_code.count; ++i) {
        const unsigned symbol = main_code.order[i];
        const unsigned l = main_code.lengths[symbol];
        if (l > main_index_bits)
            break;
        const unsigned room = main_index_bits - l;
        if (symbol < literal_symbols) {
            next = std::fill_n(next, 1u << room, entry::literal(symbol, l));
            continue;
        }
        const unsigned slot = (symbol - literal_symbols) / headers_per_slot;
        const unsigned header = (symbol - literal_symbols) % headers_per_slot;
        entry::type* const end = next + (1u << room);
        if (header != long_header) {
            next = std::fill_n(next, end - next, entry::match(slot, header + minimum_match, l, in_aligned));
            continue;
        }
        for (unsigned k = 0; k < length_code.count; ++k) {
            const unsigned further = length_code.order[k];
            const unsigned further_length = length_code.lengths[further];
            if (further_length > room)
                break;
            next = std::fill_n(
                next, 1u << (room - further_length),
                entry::match(slot, long_header + minimum_match + further, l + further_length, in_aligned));
        }
        next = std::fill_n(next, end - next, slot << entry::special_slot_shift | l << entry::code_shift);
    }
    std::fill(next, std::end(main), entry::type{0});
}

} // namespace algorithm::lzx

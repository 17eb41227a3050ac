#include "codec/lzx/lzx_fast_tables.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace algorithm::lzx {

namespace {

/// The entries of match symbols, with code length 0; an entry is 0 where a length symbol follows.
template<bool Aligned>
constexpr std::array<entry::type, maximum_main_symbols> plain_entries = [] {
    std::array<entry::type, maximum_main_symbols> entries{};
    for (unsigned symbol = literal_symbols; symbol < maximum_main_symbols; ++symbol) {
        const unsigned slot = (symbol - literal_symbols) / headers_per_slot;
        const unsigned header = (symbol - literal_symbols) % headers_per_slot;
        if (header != long_header)
            entries[symbol] = entry::match(slot, header + minimum_match, 0, Aligned);
    }
    return entries;
}();

} // namespace

bool fast_tables::build(const block_codes& codes) {
    main_order.sort(codes.main_lengths, codes.main_symbols);
    if (main_order.empty())
        return false;
    length_order.sort(codes.length_lengths, length_symbols);
    fill_length();
    if (codes.aligned_table == nullptr) {
        fill_main<false>();
    } else {
        fill_main<true>();
        fill_aligned(codes.aligned_table, codes.aligned_lengths);
    }
    return true;
}

void fast_tables::fill_length() {
    std::uint16_t* next = length;
    for (unsigned l = 1; l <= length_index_bits; ++l)
        for (unsigned i = length_order.first[l]; i < length_order.first[l + 1]; ++i)
            next = std::fill_n(next, 1u << (length_index_bits - l),
                               static_cast<std::uint16_t>(l << 8 | length_order.symbols[i]));
    std::fill(next, std::end(length), length_order.empty() ? std::uint16_t{0} : long_code);
}

template<bool Aligned>
void fast_tables::fill_main() {
    entry::type* next = main;
    for (unsigned l = 1; l <= main_index_bits; ++l) {
        const unsigned room = main_index_bits - l;
        unsigned i = main_order.first[l];
        const unsigned symbols_end = main_order.first[l + 1];
        for (; i < symbols_end && main_order.symbols[i] < literal_symbols; ++i)
            next = std::fill_n(next, 1u << room, entry::literal(main_order.symbols[i], l));
        for (; i < symbols_end; ++i) {
            const unsigned symbol = main_order.symbols[i];
            if (const entry::type plain = plain_entries<Aligned>[symbol]) {
                next = std::fill_n(next, 1u << room, plain + (l << entry::size_shift | l));
                continue;
            }
            const unsigned slot = (symbol - literal_symbols) / headers_per_slot;
            entry::type* const end = next + (1u << room);
            for (unsigned more = 1; more <= room; ++more) {
                const entry::type shortest =
                    entry::match(slot, long_header + minimum_match, l + more, Aligned);
                for (unsigned k = length_order.first[more]; k < length_order.first[more + 1]; ++k)
                    next =
                        std::fill_n(next, 1u << (room - more),
                                    shortest + (entry::type{length_order.symbols[k]} << entry::length_shift));
            }
            next = std::fill_n(next, end - next, slot << entry::slot_shift | l);
        }
    }
    std::fill(next, std::end(main), entry::type{0});
}

void fast_tables::fill_aligned(const std::uint8_t* symbols, const std::uint8_t* lengths) {
    for (unsigned i = 0; i < 1u << aligned_table_bits; ++i)
        aligned[(1u << aligned_table_bits) + i] = (entry::token{symbols[i]} << entry::symbol_shift) +
                                                  (entry::token{lengths[symbols[i]]} << entry::size_shift) -
                                                  (entry::token{entry::aligned} << entry::size_shift);
}

} // namespace algorithm::lzx

#include "codec/lzx/lzx_tables.h"

#include "codec/canonical_code.h"

#include <algorithm>

namespace algorithm::lzx {

unsigned count_slots(std::uint32_t window_size) {
    unsigned slots = 4;
    std::uint32_t reach = 4;
    do
        reach += 1u << extra_bits(slots++);
    while (reach < window_size);
    return slots;
}

bool is_buildable(const std::uint8_t* lengths, unsigned count) {
    // How much of all 16-bit numbers begins with a code of each length.
    static constexpr auto shares = [] {
        std::array<std::uint32_t, maximum_code_length + 1> all{};
        for (unsigned l = 1; l <= maximum_code_length; ++l)
            all[l] = 1u << (maximum_code_length - l);
        return all;
    }();
    std::uint32_t sum = 0;
    for (unsigned symbol = 0; symbol < count; ++symbol)
        sum += shares[lengths[symbol]];
    return sum == 0 || sum == 1u << maximum_code_length;
}

bool build_table(const std::uint8_t* lengths, unsigned count, unsigned bits, std::int16_t* table,
                 tree_links* links) {
    const codec::canonical_code<maximum_code_length> code(lengths, count);
    const std::uint32_t size = 1u << bits;
    const unsigned beyond = maximum_code_length - bits;
    if (code.used() == 0) {
        std::fill_n(table, size, std::int16_t{0});
        return true;
    }
    if (code.used() != 1u << maximum_code_length)
        return false;

    std::fill(table + (code.end[bits] >> beyond), table + size, std::int16_t{0});
    std::uint32_t next[maximum_code_length + 1]; // codes, or for the short ones table indexes
    for (unsigned l = 1; l <= maximum_code_length; ++l)
        next[l] = l <= bits ? code.begin(l) >> beyond : code.begin(l);

    auto next_node = static_cast<std::int16_t>(count);
    for (unsigned symbol = 0; symbol < count; ++symbol) {
        const unsigned l = lengths[symbol];
        if (l == 0)
            continue;
        if (l <= bits) {
            const std::uint32_t weight = 1u << (bits - l);
            if (next[l] + weight > size)
                return false;
            std::fill_n(table + next[l], weight, static_cast<std::int16_t>(symbol));
            next[l] += weight;
            continue;
        }
        std::int16_t* slot = &table[next[l] >> beyond];
        for (unsigned i = 0; i < l - bits; ++i) {
            if (*slot == 0) {
                links[next_node] = {0, 0};
                *slot = static_cast<std::int16_t>(-next_node++);
            }
            tree_links& node = links[-*slot];
            slot = next[l] >> (beyond - 1 - i) & 1 ? &node.right : &node.left;
        }
        *slot = static_cast<std::int16_t>(symbol);
        next[l] += 1u << (maximum_code_length - l);
    }
    return true;
}

bool build_aligned_table(const std::uint8_t* lengths, std::uint8_t* table) {
    constexpr unsigned size = 1u << aligned_table_bits;
    const codec::canonical_code<aligned_table_bits> code(lengths, aligned_symbols);
    if (code.used() % size != 0)
        return false;
    std::fill_n(table, size, std::uint8_t{0});
    unsigned next[aligned_table_bits + 1];
    for (unsigned l = 1; l <= aligned_table_bits; ++l)
        next[l] = code.begin(l) % size;
    for (unsigned symbol = 0; symbol < aligned_symbols; ++symbol) {
        const unsigned l = lengths[symbol];
        if (l == 0)
            continue;
        const unsigned weight = 1u << (aligned_table_bits - l);
        if (next[l] + weight > size)
            return false;
        std::fill_n(table + next[l], weight, static_cast<std::uint8_t>(symbol));
        next[l] += weight;
    }
    return true;
}

} // namespace algorithm::lzx

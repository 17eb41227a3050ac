#include "codec/lzx_decompressor.h"
#include "codec/lzx_fast_bits.h"
#include "codec/lzx_fast_tables.h"

// The first half of the fast loop: from bits to tokens. Nothing here looks at the window, at the offsets in
// use or at the end of the block, so that it may begin anywhere, even in the middle of a symbol.
//
// That is what the lanes live on. A symbol's place hangs on the symbol before, a chain of some 25 cycles of
// which most is waiting. So the piece is cut in four, and four chains run side by side. All but the first
// begin at a place where most likely no symbol begins; after a few dozen symbols they have fallen into step
// with the true ones, and what they read until then is left out (see run_fast_loop).

namespace algorithm::lzx {

static_assert(fast_tables::main_index_bits + 17 <= valid_bits, "a symbol and its footer");
static_assert(fast_tables::main_index_bits + 14 + aligned_bits <= valid_bits, "the same with aligned symbol");
static_assert(2 * maximum_code_length <= valid_bits, "two long codes");
static_assert(2 * maximum_code_length + 14 + aligned_bits <= entry::bits_mask, "the size of any token");

namespace {

/// Makes a token of a match's entry and the bits that follow its code, which `code` tells.
template<bool Aligned>
entry::type with_footer(const fast_tables& tables, std::uint64_t bits, entry::type e) {
    entry::type token = e + (bits << (e >> entry::code_shift & entry::bits_mask) >>
                                 (e >> entry::footer_shift & entry::bits_mask) &
                             entry::base_mask);
    if constexpr (Aligned)
        token +=
            tables
                .aligned[(bits << (e & entry::bits_mask) >> (64 - aligned_bits)) + 2 * (e & entry::aligned)];
    return token;
}

} // namespace

template<bool Aligned>
inline entry::type decompressor::token_at(const std::uint8_t* words, std::uint64_t at) const {
    const std::uint64_t bits = bits_at(words, at);
    const entry::type e = fast->main[bits >> (64 - fast_tables::main_index_bits)];
    if ((e & entry::bits_mask) == 0) [[unlikely]]
        return special_token<Aligned>(words, at, e);
    return with_footer<Aligned>(*fast, bits, e);
}

/// Where the main table doesn't say all.
template<bool Aligned>
[[gnu::noinline]] entry::type decompressor::special_token(const std::uint8_t* words, std::uint64_t at,
                                                          entry::type e) const {
    std::uint64_t bits = bits_at(words, at);
    auto slot = static_cast<unsigned>(e >> entry::special_slot_shift & entry::bits_mask);
    unsigned header = long_header;
    auto size = static_cast<unsigned>(e >> entry::code_shift & entry::bits_mask);
    if (size == 0) {
        const unsigned symbol = walk(bits, main_table, main_links, main_bits);
        size = main_lengths[symbol];
        if (symbol < literal_symbols)
            return entry::literal(symbol, size);
        slot = (symbol - literal_symbols) / headers_per_slot;
        header = (symbol - literal_symbols) % headers_per_slot;
    }
    if (header == long_header) {
        bits <<= size;
        const std::uint16_t l = fast->length[bits >> (64 - fast_tables::length_index_bits)];
        unsigned further = l & 0xFF;
        unsigned further_size = l >> 8;
        if (l == fast_tables::long_code) {
            further = walk(bits, length_table, length_links, length_bits);
            further_size = length_lengths[further];
        }
        size += further_size;
        header += further;
    }
    e = entry::slot_matches<Aligned>[slot] | entry::type{header + minimum_match} << entry::length_shift;
    return with_footer<Aligned>(*fast, bits_at(words, at + size), e) + size;
}

template<bool Aligned>
void decompressor::read_tokens(const std::uint8_t* words, token_stretch (&list)[token_lanes]) const {
    static_assert(token_lanes == 4);
    entry::type* out = fast->tokens;
    entry::type* const out_end = out + fast_tables::most_tokens;
    std::uint64_t at[token_lanes];
    bool busy[token_lanes];
    for (unsigned k = 0; k < token_lanes; ++k) {
        list[k].first = out + k;
        at[k] = list[k].start;
        busy[k] = true;
    }
    const auto finish = [&](unsigned k) {
        list[k].reached = at[k];
        list[k].last = out + k;
        busy[k] = false;
    };

    for (unsigned working = token_lanes; working > 0 && out != out_end;) {
        std::uint64_t at_0 = at[0], at_1 = at[1], at_2 = at[2], at_3 = at[3];
        const auto step = [&](std::uint64_t& lane_at, unsigned k) {
            const entry::type token = token_at<Aligned>(words, lane_at);
            out[k] = token;
            lane_at += token & entry::bits_mask;
        };
        while (at_0 < list[0].stop && at_1 < list[1].stop && at_2 < list[2].stop && at_3 < list[3].stop &&
               out != out_end) {
            step(at_0, 0);
            step(at_1, 1);
            step(at_2, 2);
            step(at_3, 3);
            out += token_lanes;
        }
        at[0] = at_0, at[1] = at_1, at[2] = at_2, at[3] = at_3;
        for (unsigned k = 0; k < token_lanes; ++k) {
            if (at[k] < list[k].stop)
                continue;
            if (busy[k]) {
                finish(k);
                --working;
            }
            at[k] = list[k].start; // once more, for nobody, until the others are there
        }
    }
    for (unsigned k = 0; k < token_lanes; ++k)
        if (busy[k])
            finish(k);
}

template<bool Aligned>
std::uint64_t decompressor::read_alone(const std::uint8_t* words, std::uint64_t at, std::uint64_t stop,
                                       entry::type* out, unsigned& count) const {
    const unsigned most = count;
    for (count = 0; count < most && at < stop; ++count) {
        out[count] = token_at<Aligned>(words, at);
        at += out[count] & entry::bits_mask;
    }
    return at;
}

template void decompressor::read_tokens<false>(const std::uint8_t*, token_stretch (&)[token_lanes]) const;
template void decompressor::read_tokens<true>(const std::uint8_t*, token_stretch (&)[token_lanes]) const;
template std::uint64_t decompressor::read_alone<false>(const std::uint8_t*, std::uint64_t, std::uint64_t,
                                                       entry::type*, unsigned&) const;
template std::uint64_t decompressor::read_alone<true>(const std::uint8_t*, std::uint64_t, std::uint64_t,
                                                      entry::type*, unsigned&) const;

} // namespace algorithm::lzx

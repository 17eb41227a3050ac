#include "codec/lzx/lzx_token_lanes.h"

#include "harbor6/groundwork/endian.h"

#include <algorithm>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace algorithm::lzx {

namespace {

constexpr unsigned valid_bits = 64 - 7;
static_assert(fast_tables::main_index_bits + longest_footer <= valid_bits, "a symbol and its footer");
static_assert(fast_tables::main_index_bits + longest_footer - aligned_footer_bits + aligned_table_bits <=
                  valid_bits,
              "the same with aligned symbol");
static_assert(2 * maximum_code_length <= valid_bits, "two long codes");

constexpr unsigned longest_token = 2 * maximum_code_length + longest_footer + aligned_table_bits;
static_assert(longest_token < entry::aligned, "the size of any token");

// A token may begin in the last requested bit, and its bits are loaded 64 at a time.
static_assert(16 * token_lanes::lookahead_words > longest_token + 64);

/// Appends a token to `tokens` others, of which `matches` are matches. It is written both as a literal and as
/// a match, without a branch; the next one overwrites the wrong one of the two.
inline void append(token_list& to, entry::token token, std::uint64_t tokens, std::uint64_t& matches) {
    const std::uint64_t literals = tokens - matches;
    to.matches[matches] = token;
    to.literals_before[matches] = static_cast<std::uint16_t>(literals);
    to.literals[literals] = static_cast<std::uint8_t>(token);
    matches += entry::match_count(token);
}

/// Writes the words in reverse order, the bytes within each unchanged.
void reverse_words(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
    to += 2 * count;
#if defined(__SSE2__)
    constexpr int in_reverse = _MM_SHUFFLE(0, 1, 2, 3);
    for (; count >= 8; count -= 8, from += 16) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i halves = _mm_shufflehi_epi16(_mm_shufflelo_epi16(eight, in_reverse), in_reverse);
        to -= 16;
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_shuffle_epi32(halves, _MM_SHUFFLE(1, 0, 3, 2)));
    }
#endif
    for (; count > 0; --count, from += 2) {
        to -= 2;
        std::memcpy(to, from, 2);
    }
}

} // namespace

void token_lanes::load(const std::uint8_t* words, std::uint64_t at, std::uint64_t bits) {
    const std::uint64_t first = at / 16;
    const std::uint64_t words_end = (at + bits + 15) / 16 + lookahead_words;
    reverse_words(chunk + chunk_margin, words + 2 * first, words_end - first);
    chunk_last = 16 * words_end - 1;
}

/// The bits from `place` on, the first one at the top; the first `valid_bits` are valid.
inline std::uint64_t token_lanes::bits_at(std::uint64_t place) const {
    return endian::load_le64(chunk + chunk_margin - 7 + (place >> 3)) << (~place & 7);
}

/// Makes a token of an entry and the bits that begin with its code.
template<bool Aligned>
inline entry::token token_lanes::with_footer(std::uint64_t bits, entry::type e) const {
    entry::token token = (bits << (e & entry::shift_mask) & entry::footer_mask) | e;
    if constexpr (Aligned) {
        const entry::type size = e >> entry::size_shift;
        token += tables.aligned[(bits << (size & entry::shift_mask) >> (64 - aligned_table_bits)) +
                                (1u << aligned_table_bits) / entry::aligned * (size & entry::aligned)];
    }
    return token;
}

template<bool Aligned>
inline entry::token token_lanes::token_at(std::uint64_t place) const {
    const std::uint64_t bits = bits_at(place);
    const entry::type e = tables.main[bits >> (64 - fast_tables::main_index_bits)];
    if ((e & entry::size_mask) == 0) [[unlikely]]
        return special_token<Aligned>(place, e);
    return with_footer<Aligned>(bits, e);
}

/// The token of a special entry. Not inlined, since the lanes' loop needs its registers.
template<bool Aligned>
[[gnu::noinline]] entry::token token_lanes::special_token(std::uint64_t place, entry::type e) const {
    std::uint64_t bits = bits_at(place);
    unsigned slot = e >> entry::slot_shift & entry::slot_mask;
    unsigned header = long_header;
    unsigned size = e & entry::shift_mask;
    const auto next_code = [&] { return static_cast<std::uint32_t>(bits >> (64 - maximum_code_length)); };
    if (size == 0) {
        const unsigned symbol =
            tables.main_order.find_longer(next_code(), fast_tables::main_index_bits, size);
        if (symbol < literal_symbols)
            return entry::literal(symbol, size);
        slot = (symbol - literal_symbols) / headers_per_slot;
        header = (symbol - literal_symbols) % headers_per_slot;
    }
    if (header == long_header) {
        bits <<= size;
        const unsigned found = tables.length[bits >> (64 - fast_tables::length_index_bits)];
        unsigned more = found & 0xFF;
        unsigned more_size = found >> 8;
        if (found == fast_tables::long_code)
            more = tables.length_order.find_longer(next_code(), fast_tables::length_index_bits, more_size);
        size += more_size;
        header += more;
    }
    e = entry::match(slot, header + minimum_match, 0, Aligned);
    return with_footer<Aligned>(bits_at(place - size), e) + (size << entry::size_shift);
}

struct token_lanes::state {
    std::uint64_t next[lane_count]; ///< places
    std::uint64_t matches[lane_count];
    unsigned tokens; ///< of each lane
};

/// Reads on in all lanes until one has reached its end, or each has `token_limit` tokens.
template<bool Aligned, bool Recording>
void token_lanes::read_interleaved(state& all, unsigned token_limit) {
    static_assert(lane_count == 4);
    auto [next_0, next_1, next_2, next_3] = all.next;
    auto [matches_0, matches_1, matches_2, matches_3] = all.matches;
    unsigned tokens = all.tokens;
    const auto step = [&](unsigned k, std::uint64_t& next, std::uint64_t& matches) {
        if constexpr (Recording) {
            recorded_places[k][tokens] = static_cast<std::uint16_t>(next);
            recorded_matches[k][tokens] = static_cast<std::uint16_t>(matches);
        }
        const entry::token token = token_at<Aligned>(next);
        append(lists[k], token, tokens, matches);
        next -= entry::size(token);
    };
    while (next_0 > lists[0].chunk_stop && next_1 > lists[1].chunk_stop && next_2 > lists[2].chunk_stop &&
           next_3 > lists[3].chunk_stop && tokens != token_limit) {
        step(0, next_0, matches_0);
        step(1, next_1, matches_1);
        step(2, next_2, matches_2);
        step(3, next_3, matches_3);
        ++tokens;
    }
    all = {{next_0, next_1, next_2, next_3}, {matches_0, matches_1, matches_2, matches_3}, tokens};
}

template<bool Aligned>
void token_lanes::read(const std::uint8_t* words, std::uint64_t at, std::uint64_t part) {
    load(words, at, lane_count * part);
    state all{};
    for (unsigned k = 0; k < lane_count; ++k) {
        all.next[k] = chunk_last - (at + k * part);
        lists[k].chunk_stop = all.next[k] - part;
    }
    unsigned working = lane_count;
    bool done[lane_count] = {};
    while (working > 0) {
        if (all.tokens < recorded)
            read_interleaved<Aligned, true>(all, recorded);
        else
            read_interleaved<Aligned, false>(all, token_list::capacity);
        const bool full = all.tokens == token_list::capacity;
        for (unsigned k = 0; k < lane_count; ++k) {
            if (all.next[k] > lists[k].chunk_stop && !full)
                continue;
            if (!done[k]) {
                done[k] = true;
                --working;
                lists[k].token_count = all.tokens;
                lists[k].match_count = all.matches[k];
                lists[k].chunk_next = all.next[k];
            }
            // A finished lane keeps stepping; its output is discarded.
            all.next[k] = lists[k].chunk_stop + part;
        }
    }
}

template<bool Aligned>
void token_lanes::read_one(token_list& to) {
    const entry::token token = token_at<Aligned>(to.chunk_next);
    append(to, token, to.token_count++, to.match_count);
    to.chunk_next -= entry::size(token);
}

template<bool Aligned>
bool token_lanes::synchronize(unsigned k, token_position& position) {
    token_list& from = lists[k];
    const std::uint64_t candidates = std::min<std::uint64_t>(recorded, lists[k + 1].token_count);
    const std::uint64_t limit = from.token_count + token_list::extra_capacity;
    for (std::uint64_t i = 0; i < candidates;) {
        const std::uint64_t begins = recorded_places[k + 1][i];
        if (begins > from.chunk_next) {
            ++i;
        } else if (begins == from.chunk_next) {
            position.match = recorded_matches[k + 1][i];
            position.literal = i - position.match;
            return true;
        } else if (from.token_count == limit) {
            break;
        } else {
            read_one<Aligned>(from);
        }
    }
    return false;
}

template<bool Aligned>
void token_lanes::read_sequential(const std::uint8_t* words, std::uint64_t at, std::uint64_t input_end) {
    const std::uint64_t bits = std::min(input_end - at, max_bits);
    load(words, at, bits);
    token_list& to = lists[0];
    to.token_count = to.match_count = 0;
    to.chunk_next = chunk_last - at;
    to.chunk_stop = to.chunk_next - bits;
    while (to.chunk_next > to.chunk_stop && to.token_count < token_list::capacity)
        read_one<Aligned>(to);
}

template void token_lanes::read<false>(const std::uint8_t*, std::uint64_t, std::uint64_t);
template void token_lanes::read<true>(const std::uint8_t*, std::uint64_t, std::uint64_t);
template bool token_lanes::synchronize<false>(unsigned, token_position&);
template bool token_lanes::synchronize<true>(unsigned, token_position&);
template void token_lanes::read_sequential<false>(const std::uint8_t*, std::uint64_t, std::uint64_t);
template void token_lanes::read_sequential<true>(const std::uint8_t*, std::uint64_t, std::uint64_t);

} // namespace algorithm::lzx

#pragma once

#include "codec/lzx/lzx_fast_tables.h"

#include <cstdint>

namespace algorithm::lzx {

/// Literals in front of a match are copied in steps of so many bytes, one step even for none.
constexpr unsigned literal_step = 16;

/// A place between two tokens of a list.
struct token_place {
    std::uint64_t literal;
    std::uint64_t match;
};

/// The tokens that a lane has read: matches, and the literals in front of each of them.
struct token_list {
    static constexpr unsigned most = 1024;     ///< tokens that a lane reads
    static constexpr unsigned most_more = 128; ///< and then to fall into step with the next one

    entry::token matches[most + most_more + 1];
    std::uint16_t literals_before[most + most_more + 1]; ///< in the whole list
    std::uint8_t literals[most + most_more + literal_step];

    std::uint64_t token_count; ///< matches and literals
    std::uint64_t match_count;
    std::uint64_t chunk_next; ///< where the next token begins
    std::uint64_t chunk_stop; ///< from here on, read() begins no token; fall_into_step() may
};

/// The first half of the fast loop: from bits to tokens. Nothing here looks at the window, at the offsets in
/// use or at the end of the block, so that it may begin anywhere, even in the middle of a symbol.
///
/// That is what the lanes live on. A symbol's place depends on the symbol before, a chain of some 15
/// cycles, or 22 with an aligned offset symbol, of which most is waiting. So a piece of the input is cut in
/// four, and four chains run side by side. All but the first begin at a place where most likely no symbol
/// begins; after a few dozen symbols they have fallen into step with the true ones, and what they read until
/// then is left out.
///
/// Bits of the input are numbered from 0 on, the highest one of its first word. Places in a chunk, the part
/// of the input that is being read, count down to its last bit.
class token_lanes {
public:
    static constexpr unsigned lane_count = 4;
    static constexpr std::uint64_t most_bits = 60'000; ///< read at a time: places in a chunk fit 16 bits
    /// Words that are looked at behind those of the bits that are asked for.
    static constexpr unsigned further_words = 8;

    /// Has to come before the first reading of each block. Answers false if there is nothing to read.
    bool begin_block(const block_codes& codes) { return tables.build(codes); }

    /// Reads `lane_count` times `part` bits from bit `at` of `words` on into the lists; no more than
    /// `most_bits` altogether. A list that is full ends early.
    template<bool Aligned>
    void read(const std::uint8_t* words, std::uint64_t at, std::uint64_t part);

    /// Reads on in list `k` until a token begins where one of the first in list `k` + 1 does, and gives that
    /// one's place there. Answers false if it has passed them, or read `most_more` tokens; what was read
    /// stays in list `k`.
    template<bool Aligned>
    bool fall_into_step(unsigned k, token_place& place);

    /// Reads into the first list alone the tokens that begin in bits `at` to `input_end`, or as many of them
    /// as there is room for.
    template<bool Aligned>
    void read_alone(const std::uint8_t* words, std::uint64_t at, std::uint64_t input_end);

    token_list& list(unsigned k) { return lists[k]; }
    /// The number of the input's bit at a place in the chunk.
    std::uint64_t to_input_bit(std::uint64_t place) const { return chunk_last - place; }

private:
    static constexpr unsigned noted = 64; ///< first tokens of a lane of which it is known where they begin
    static constexpr unsigned chunk_size = (most_bits + 2 * 15) / 16 * 2 + 2 * further_words;
    static_assert(8 * chunk_size <= 1u << 16);
    static constexpr unsigned chunk_margin = 8; ///< eight bytes are loaded, from up to 7 before the chunk on

    struct state;

    void load(const std::uint8_t* words, std::uint64_t at, std::uint64_t bits);
    std::uint64_t bits_at(std::uint64_t place) const;
    template<bool Aligned>
    entry::token with_footer(std::uint64_t bits, entry::type e) const;
    template<bool Aligned>
    entry::token token_at(std::uint64_t place) const;
    template<bool Aligned>
    entry::token special_token(std::uint64_t place, entry::type e) const;
    template<bool Aligned, bool Noted>
    void read_abreast(state& all, unsigned token_limit);
    template<bool Aligned>
    void read_one(token_list& to);

    fast_tables tables;
    token_list lists[lane_count];
    std::uint16_t noted_places[lane_count][noted];
    std::uint16_t noted_matches[lane_count][noted];
    std::uint64_t chunk_last = 0; ///< the input number of the chunk's last bit
    /// Its words in reverse, so that the next bits always stand at the top of a number that is loaded.
    std::uint8_t chunk[chunk_margin + chunk_size];
};

} // namespace algorithm::lzx

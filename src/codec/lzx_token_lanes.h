#pragma once

#include "codec/lzx_fast_tables.h"

#include <cstdint>

namespace algorithm::lzx {

/// Bytes that are copied at least where literals stand in front of a match.
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

    std::uint64_t tokens;  ///< matches and literals
    std::uint64_t matched; ///< matches
    std::uint64_t next;    ///< the bit behind the tokens
    std::uint64_t stop;    ///< the bit from which on no token of this lane begins
};

/// The first half of the fast loop: from bits to tokens. Nothing here looks at the window, at the offsets in
/// use or at the end of the block, so that it may begin anywhere, even in the middle of a symbol.
///
/// That is what the lanes live on. A symbol's place hangs on the symbol before, a chain of some 15 to 22
/// cycles of which most is waiting. So a piece of the input is cut in four, and four chains run side by side.
/// All but the first begin at a place where most likely no symbol begins; after a few dozen symbols they have
/// fallen into step with the true ones, and what they read until then is left out.
///
/// Bits are numbered from 0 on, the first one of `words` being that of the number 0.
class token_lanes {
public:
    static constexpr unsigned lanes = 4;
    static constexpr std::uint64_t most_bits = 60'000; ///< that are read at a time

    /// Has to come before the first reading of each block. Answers false if there is nothing to read.
    bool use(const block_codes& codes) { return tables.build(codes); }

    /// Reads `lanes` times `part` bits from bit `at` on into the lists. `behind` is the bit behind all there
    /// are; from there on 32 bytes of zeros must follow.
    template<bool Aligned>
    void read(const std::uint8_t* words, std::uint64_t behind, std::uint64_t at, std::uint64_t part);

    /// Reads on in the list of lane `k` until a token begins where one of the next lane does. `place` becomes
    /// that token's. Answers false if there is no such token near by.
    template<bool Aligned>
    bool fall_into_step(unsigned k, token_place& place);

    /// Reads into the first list alone the tokens that begin in bits `at` to `stop`, or as many of them as
    /// there is room for.
    template<bool Aligned>
    void read_alone(const std::uint8_t* words, std::uint64_t behind, std::uint64_t at, std::uint64_t stop);

    token_list& list(unsigned k) { return lists[k]; }
    /// The number of a bit that a list tells.
    std::uint64_t bit_number(std::uint64_t bit) const { return chunk_last - bit; }

private:
    static constexpr unsigned noted = 64; ///< first tokens of a lane of which it is known where they begin
    static constexpr unsigned chunk_size = (most_bits + 15) / 16 * 2 + 32;
    static constexpr unsigned chunk_margin = 8;

    struct state;

    void load(const std::uint8_t* words, std::uint64_t behind, std::uint64_t at, std::uint64_t bits);
    std::uint64_t bits_at(std::uint64_t next) const;
    template<bool Aligned>
    entry::token with_footer(std::uint64_t bits, entry::type e) const;
    template<bool Aligned>
    entry::token token_at(std::uint64_t next) const;
    template<bool Aligned>
    entry::token special_token(std::uint64_t next, entry::type e) const;
    template<bool Aligned, bool Noted>
    void read_abreast(state& all, unsigned stop);
    template<bool Aligned>
    void read_one(token_list& to);

    fast_tables tables;
    token_list lists[lanes];
    std::uint16_t noted_next[lanes][noted];
    std::uint16_t noted_matches[lanes][noted];
    std::uint64_t chunk_last = 0; ///< the number of the chunk's last bit
    /// A part of the input, its words in reverse, so that the next bits always stand at the top of a number.
    /// Its bits are counted from the last one on, which is 0.
    std::uint8_t chunk[chunk_margin + chunk_size];
};

} // namespace algorithm::lzx

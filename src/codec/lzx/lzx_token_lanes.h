#pragma once

#include "codec/lzx/lzx_fast_tables.h"

#include <cstdint>

namespace algorithm::lzx {

/// Literals before a match are copied in steps of this many bytes, at least one step even if there are none.
constexpr unsigned literal_step = 16;

/// A position between two tokens of a list.
struct token_position {
    std::uint64_t literal; ///< literals before it
    std::uint64_t match;   ///< matches before it
};

/// The tokens that a lane has read: matches, and the literals before each of them.
struct token_list {
    static constexpr unsigned capacity = 1024;      ///< tokens that read() stores at most
    static constexpr unsigned extra_capacity = 128; ///< tokens that synchronize() adds at most

    entry::token matches[capacity + extra_capacity + 1];
    std::uint16_t literals_before[capacity + extra_capacity + 1]; ///< each match; in the whole list
    std::uint8_t literals[capacity + extra_capacity + literal_step];

    std::uint64_t token_count; ///< matches and literals
    std::uint64_t match_count;
    std::uint64_t chunk_next; ///< where the next token begins
    std::uint64_t chunk_stop; ///< read() starts no token at or after this place; synchronize() may
};

/// The first half of the fast loop: turns bits into tokens. It looks neither at the window, nor at the
/// repeated offsets, nor at the end of the block, so it may begin anywhere, even in the middle of a symbol.
///
/// The lanes rely on that. Each symbol's place depends on the symbol before, a dependency chain of some 15
/// cycles, or 22 with an aligned offset symbol, most of it latency. So a piece of the input is cut in four,
/// and four lanes are read side by side. All but the first begin at a place where most likely no symbol
/// begins, and what they read at first is wrong. After a few dozen symbols they usually reach the beginning
/// of a true symbol and read true ones from there on; synchronize() finds where, and the tokens before are
/// left out.
///
/// Bits of the input are numbered from 0, the highest bit of its first word. Places in a chunk, the part of
/// the input that is being read, count down to 0 at the chunk's last bit.
///
/// It owns its lists and tables; the input is only read during a call. For one thread at a time.
class token_lanes {
public:
    static constexpr unsigned lane_count = 4;
    static constexpr std::uint64_t max_bits = 60'000; ///< per call of read(): places in a chunk fit 16 bits
    /// Words behind those of the requested bits that may be read, so they must be readable.
    static constexpr unsigned lookahead_words = 8;

    /// Sets the codes; to be called before the first reading in each block. Returns false if no symbol can be
    /// decoded, and then nothing may be read.
    bool begin_block(const block_codes& codes) { return tables.build(codes); }

    /// Reads `lane_count` times `part` bits from bit `at` of `words` on into the lists, `max_bits` at most
    /// altogether. A lane ends early when its list is full.
    template<bool Aligned>
    void read(const std::uint8_t* words, std::uint64_t at, std::uint64_t part);

    /// Reads on in list `k` until one of its tokens begins at the same place as one of the first tokens of
    /// list `k` + 1, and sets `position` to that place in list `k` + 1. Returns false if there is no such
    /// place, or not within `extra_capacity` further tokens. What was read is in list `k` either way.
    template<bool Aligned>
    bool synchronize(unsigned k, token_position& position);

    /// Reads the tokens that begin in bits `at` to `input_end` into the first list alone, until that is full
    /// or `max_bits` are read.
    template<bool Aligned>
    void read_sequential(const std::uint8_t* words, std::uint64_t at, std::uint64_t input_end);

    token_list& list(unsigned k) { return lists[k]; }
    /// The number of the input's bit at `place` in the chunk.
    std::uint64_t to_input_bit(std::uint64_t place) const { return chunk_last - place; }

private:
    static constexpr unsigned recorded = 64; ///< first tokens of a lane whose places are recorded
    static constexpr unsigned chunk_size = (max_bits + 2 * 15) / 16 * 2 + 2 * lookahead_words;
    static_assert(8 * chunk_size <= 1u << 16);
    static constexpr unsigned chunk_margin = 8; ///< a load of eight bytes begins up to 7 before the chunk

    struct state;

    void load(const std::uint8_t* words, std::uint64_t at, std::uint64_t bits);
    std::uint64_t bits_at(std::uint64_t place) const;
    template<bool Aligned>
    entry::token with_footer(std::uint64_t bits, entry::type e) const;
    template<bool Aligned>
    entry::token token_at(std::uint64_t place) const;
    template<bool Aligned>
    entry::token special_token(std::uint64_t place, entry::type e) const;
    template<bool Aligned, bool Recording>
    void read_interleaved(state& all, unsigned token_limit);
    template<bool Aligned>
    void read_one(token_list& to);

    fast_tables tables;
    token_list lists[lane_count];
    std::uint16_t recorded_places[lane_count][recorded];
    std::uint16_t recorded_matches[lane_count][recorded];
    std::uint64_t chunk_last = 0; ///< the input number of the chunk's last bit
    /// Its words in reverse order, so that the next bits are always the top bits of a loaded number.
    std::uint8_t chunk[chunk_margin + chunk_size];
};

} // namespace algorithm::lzx

#include "codec/lzx_decompressor.h"
#include "codec/lzx_fast_bits.h"
#include "codec/lzx_fast_tables.h"

#include <algorithm>
#include <bit>
#include <cstring>

// The fast loop decodes verbatim and aligned offset blocks in the middle of a frame.
//
// On entry: the window position is 257 or more, so that nothing written has to be mirrored; the trees of the
// block are complete; there is input and room enough, or the loop does nothing. It ends, before a main
// symbol, where little input is left, and in front of a match that would pass the end. On exit every member
// is what the exact loop would have there; a failure is left for that loop to find.
//
// It goes over a piece of the frame in three passes, none of which has a branch that is hard to foretell:
// lzx_fast_tokens.cpp makes tokens of the bits; `plan` finds where the bytes of each token come from and has
// them fetched into the near cache; then they are copied. A literal is copied out of its token.
//
// Old bytes. Matches are copied in steps of 32 bytes and so spoil up to 31 bytes ahead of the window
// position, where the window still has its oldest bytes; these can be the source of the farthest matches. So
// what the loop will overwrite is kept aside; a match from a place less than `farthest_reserve` ahead takes
// its bytes from there, and the spoilt ones are put back in the end.

namespace algorithm::lzx {

namespace {

constexpr std::uint32_t farthest_reserve = 64;
constexpr std::uint32_t shortest_plain = 16; ///< nearer sources overlap a 16-byte move
static_assert(farthest_reserve >= copy_step && fast_overhang >= 2 * copy_step);

/// The exact loop fails where a main symbol begins in a word behind the data. A symbol that begins this far
/// ahead of the data's end is not there, and reading it stays inside the data.
constexpr std::uint32_t input_margin = 24;
static_assert(input_margin >= 2 * maximum_code_length / 8 + 2 + 8);

/// Bits below which a lane isn't worth its falling into step.
constexpr std::uint64_t least_stretch = 512;
/// A lane that isn't in step after so many symbols has failed, and so often may lanes fail before the rest is
/// read without them. Codes that are all of one length never fall into step.
constexpr unsigned most_alone = 128;
constexpr unsigned most_misses = 2;
constexpr std::uint64_t usual_token_bits = 10;

constexpr std::uint64_t offset_mask = (1u << entry::offset_bits) - 1;

/// Of a literal's byte in its token.
constexpr std::size_t byte_place =
    std::endian::native == std::endian::little ? entry::byte_shift / 8 : 7 - entry::byte_shift / 8;

constexpr std::size_t batch = 64; ///< tokens that are planned before they are copied

/// Blocks below this size are not worth their tables.
constexpr std::uint32_t worthwhile_block = 1024;

/// A source less than 16 bytes back: the pattern of `distance` bytes is made once and laid down whole.
void repeat_pattern(std::uint8_t* to, std::uint32_t distance, std::uint32_t length) {
    const std::uint8_t* from = to - distance;
    if (distance >= 8) {
        for (std::uint32_t i = 0; i < length; i += 8)
            store_64(to + i, load_64(from + i));
        return;
    }
    std::uint8_t pattern[8];
    for (std::uint32_t i = 0; i < 8; ++i)
        pattern[i] = from[i % distance];
    const std::uint64_t whole = load_64(pattern);
    const std::uint32_t advance = 8 - 8 % distance;
    for (std::uint32_t i = 0; i < length; i += advance)
        store_64(to + i, whole);
}

} // namespace

struct fast_state {
    std::uint32_t start;    ///< window position on entry
    std::uint32_t end;      ///< of the block or frame
    std::uint64_t position; ///< in the window
    std::uint64_t queue; ///< the three offsets, 21 bits each, the first one lowest; the top bit is anything
};

void decompressor::decode_fast(std::uint32_t end) {
    if (window_position < longest_match || block_size < worthwhile_block)
        return;
    for (const std::uint32_t offset : {R0, R1, R2})
        if (offset == 0 || offset >= window_size)
            return;
    const std::uint8_t* data_end = input_limit - look_ahead;
    if (data_end - input_position < std::ptrdiff_t{2 * input_margin})
        return;
    if (!fast)
        fast = std::make_unique<fast_tables>();
    const bool aligned = block_type == aligned_block;
    if (!fast->ready) {
        fast->ready = true;
        fast->usable = fast->build(main_lengths, literal_symbols + headers_per_slot * position_slots,
                                   length_lengths, aligned);
        for (unsigned i = 0; i < 1u << aligned_bits; ++i)
            fast->aligned[(1u << aligned_bits) + i] =
                ((std::uint64_t{aligned_table[i]} - (i >> (aligned_bits - 3))) << entry::base_shift) +
                aligned_lengths[aligned_table[i]];
    }
    if (!fast->usable)
        return;

    const std::uint32_t start = window_position;
    fast->kept.assign(window.get() + start, window.get() + end + copy_step);
    if (aligned)
        run_fast_loop<true>(end);
    else
        run_fast_loop<false>(end);
    std::memcpy(window.get() + window_position, fast->kept.data() + (window_position - start), copy_step);
}

/// A match with a source that is near, less than farthest_reserve ahead of the target, or given by an offset
/// of a window's size or more.
void decompressor::copy_unusual(std::uint32_t start, std::uint32_t position, std::uint32_t offset,
                                std::uint32_t length) {
    std::uint8_t* const to = window.get() + position;
    const std::uint32_t distance = offset & window_mask;
    if (distance != 0 && distance < shortest_plain) {
        repeat_pattern(to, distance, length);
        return;
    }
    const std::uint32_t source = (position - distance) & window_mask;
    const bool ahead = source >= position;
    for (std::uint32_t i = 0; i < length; ++i) {
        const std::uint32_t at = source + i;
        to[i] = ahead && at - start < fast->kept.size() ? fast->kept[at - start] : window[at];
    }
}

/// Carries out tokens up to `last` or to the first that has no room, and answers where it stopped.
const std::uint64_t* decompressor::carry_out(fast_state& state, const std::uint64_t* token,
                                             const std::uint64_t* last, std::size_t stride) {
    struct move {
        const std::uint8_t* from;
        std::uint64_t length; ///< with the top bit set: by copy_unusual
    };
    constexpr std::uint64_t unusual = std::uint64_t{1} << 63;
    move moves[batch];
    std::uint8_t* const base = window.get();
    const std::uint64_t mask = window_mask;
    const std::uint64_t plain_offsets = window_size - farthest_reserve - shortest_plain;
    std::uint64_t queue = state.queue;
    std::uint64_t position = state.position;

    const auto plan = [&](const std::uint64_t* stop) {
        std::uint64_t ahead = position;
        for (move* m = moves; token != stop; token += stride, ++m) {
            const entry::type now = *token;
            queue = queue << (now >> entry::move_shift & entry::bits_mask) | now >> entry::base_shift;
            if ((now & entry::exchange) != 0) [[unlikely]] {
                const std::uint64_t where =
                    (now >> entry::exchange_shift & entry::exchange_mask) * entry::offset_bits;
                const std::uint64_t change = (queue ^ queue >> where) & offset_mask;
                queue ^= change ^ change << where;
            }
            const std::uint64_t offset = queue & offset_mask;
            // A condition would become a branch, and one that is foretold wrongly half of the time.
            const std::uint64_t literal = 0 - (now / entry::literal_flag & 1);
            const auto match_bytes = reinterpret_cast<std::uintptr_t>(base + ((ahead - offset) & mask));
            const auto literal_byte = reinterpret_cast<std::uintptr_t>(token) + byte_place;
            m->from =
                reinterpret_cast<const std::uint8_t*>(match_bytes ^ ((match_bytes ^ literal_byte) & literal));
            __builtin_prefetch(m->from);
            const std::uint64_t length = now >> entry::length_shift & entry::length_mask;
            const bool plain = ((offset - shortest_plain) & ~literal) < plain_offsets;
            m->length = length | std::uint64_t{!plain} << 63;
            ahead += length;
        }
        return ahead - position;
    };

    bool room = true;
    while (room && token != last) {
        const std::uint64_t* const first = token;
        const std::uint64_t* stop =
            static_cast<std::size_t>(last - token) > batch * stride ? token + batch * stride : last;
        const std::uint64_t queue_before = queue;
        if (plan(stop) > state.end - position) [[unlikely]] {
            room = false;
            stop = first;
            for (std::uint64_t rest = state.end - position;; stop += stride) {
                const std::uint64_t length = *stop >> entry::length_shift & entry::length_mask;
                if (length > rest)
                    break;
                rest -= length;
            }
            queue = queue_before;
            token = first;
            plan(stop);
        }
        const move* const moves_end = moves + static_cast<std::size_t>(stop - first) / stride;
        for (const move* m = moves; m != moves_end; ++m) {
            const std::uint8_t* const from = m->from;
            std::uint8_t* const to = base + position;
            const std::uint64_t length = m->length & ~unusual;
            if (m->length <= copy_step) [[likely]] {
                move_16(to, from);
                move_16(to + 16, from + 16);
            } else if (m->length < unusual) {
                for (std::uint64_t done = 0; done < length; done += copy_step) {
                    move_16(to + done, from + done);
                    move_16(to + done + 16, from + done + 16);
                }
            } else {
                copy_unusual(state.start, static_cast<std::uint32_t>(position),
                             static_cast<std::uint32_t>(to - from), static_cast<std::uint32_t>(length));
            }
            position += length;
        }
    }
    state.queue = queue;
    state.position = position;
    return token;
}

template<bool Aligned>
void decompressor::run_fast_loop(std::uint32_t end) {
    const std::uint8_t* const words = input_position - look_ahead;
    const std::uint64_t in_stop =
        8 * (static_cast<std::uint64_t>(input_limit - look_ahead - words) - input_margin);
    std::uint64_t at = 16u - static_cast<unsigned>(bits_left);
    fast_state state{window_position, end, window_position,
                     R0 | std::uint64_t{R1} << entry::offset_bits |
                         std::uint64_t{R2} << 2 * entry::offset_bits};
    bool room = true;
    // `behind` is where the symbol behind `last` begins.
    const auto take = [&](const std::uint64_t* token, const std::uint64_t* last, std::size_t stride,
                          std::uint64_t behind) {
        const std::uint64_t* const done = carry_out(state, token, last, stride);
        room = done == last;
        if (room)
            at = behind;
        for (; !room && token != done; token += stride)
            at += *token & entry::bits_mask;
    };
    const auto alone = [&](unsigned count, std::uint64_t stop, std::uint64_t* out) {
        const std::uint64_t behind = read_alone<Aligned>(words, at, stop, out, count);
        take(out, out + count, 1, behind);
        return count;
    };

    std::uint64_t token_bits = usual_token_bits;
    unsigned misses = 0;
    while (room && misses < most_misses) {
        // The rest of the block, as a guess; then a part of it that the tokens have room for.
        const std::uint64_t whole =
            at < in_stop ? std::min(in_stop - at, (end - state.position) * token_bits) : 0;
        if (whole < token_lanes * least_stretch)
            break;
        const std::uint64_t capacity = fast_tables::most_tokens * token_bits * 7 / 8;
        const std::uint64_t part = whole / ((whole + capacity - 1) / capacity) / token_lanes;
        token_stretch list[token_lanes];
        for (unsigned k = 0; k < token_lanes; ++k)
            list[k] = {at + k * part, at + (k + 1) * part, 0, nullptr, nullptr};
        read_tokens<Aligned>(words, list);

        const std::uint64_t began = at;
        std::uint64_t count = 0;
        for (const token_stretch& s : list) {
            // Into step: read on alone until a symbol begins where one of the stretch does.
            const entry::type* token = s.first;
            std::uint64_t token_begins = s.start;
            for (unsigned out_of_step = 0;
                 room && token_begins != at && token != s.last && out_of_step < most_alone;) {
                if (token_begins < at) {
                    token_begins += *token & entry::bits_mask;
                    token += token_lanes;
                } else {
                    std::uint64_t one[1 + copy_step / sizeof(entry::type) + 1];
                    out_of_step += alone(1, in_stop, one);
                    ++count;
                }
            }
            if (!room)
                break;
            if (token_begins != at) {
                ++misses;
                break;
            }
            count += static_cast<std::uint64_t>(s.last - token) / token_lanes;
            take(token, s.last, token_lanes, s.reached);
            if (!room || s.reached < s.stop)
                break;
        }
        if (count != 0)
            token_bits = (at - began) / count;
    }
    while (room && at < in_stop)
        alone(batch, in_stop, fast->tokens);

    R0 = static_cast<std::uint32_t>(state.queue & offset_mask);
    R1 = static_cast<std::uint32_t>(state.queue >> entry::offset_bits & offset_mask);
    R2 = static_cast<std::uint32_t>(state.queue >> 2 * entry::offset_bits & offset_mask);
    window_position = static_cast<std::uint32_t>(state.position);
    const std::uint8_t* const word = words + at / 16 * 2;
    input_position = word + look_ahead;
    bits_left = static_cast<std::int8_t>(16 - at % 16);
    bit_buffer = (word_at(word) << 16 | word_at(word + 2)) << at % 16;
}

} // namespace algorithm::lzx

#include "codec/lzx/lzx_fast_loop.h"

#include "harbor6/groundwork/endian.h"

#include <algorithm>
#include <array>
#include <cstring>

// Copies are made in whole steps and so overwrite up to 32 bytes ahead of the window position, where the
// window still holds its oldest bytes, the source of the farthest matches. The loop therefore saves the bytes
// that it will overwrite. A match from less than `wrap_margin` ahead is copied from those, and the bytes
// ahead of the last position are restored at the end.

namespace algorithm::lzx {

namespace {

constexpr std::uint32_t copy_step = 32;
constexpr std::uint32_t wrap_margin = 64;
constexpr std::uint32_t min_direct_offset = 16; ///< nearer sources overlap a 16-byte copy
static_assert(wrap_margin >= copy_step && fast_loop::window_padding >= 2 * copy_step);

/// Shorter lanes cost more to synchronize than they save.
constexpr std::uint64_t min_lane_bits = 512;
/// After this many lanes that couldn't be synchronized the rest is read sequentially. With codes that all
/// have the same length none ever can.
constexpr unsigned max_misses = 2;
constexpr std::uint64_t initial_token_bits = 10;

constexpr unsigned offset_bits = 21; ///< of one offset in the queue
constexpr std::uint64_t offset_mask = (1u << offset_bits) - 1;
static_assert(slot_bases[maximum_slots] >> offset_bits == 0);

void copy_8(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 8);
}

void copy_16(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 16);
}

/// How a slot's offset is computed from a token: ((token >> 1 >> shift) & mask) + base, plus aligned symbol.
/// Two shifts, since they are 64 bits where there is no footer. A power of two in size, so that an index is a
/// shift.
struct alignas(32) slot_rule {
    std::uint64_t base;
    std::uint64_t mask;
    std::uint32_t shift;
    std::uint32_t move; ///< offset_bits: the offset is new, the queue moves up; otherwise 0
};

template<bool Aligned>
constexpr std::array<slot_rule, entry::slot_mask + 1> slot_rules = [] {
    std::array<slot_rule, entry::slot_mask + 1> rules{};
    for (unsigned slot = 0; slot < maximum_slots; ++slot) {
        const unsigned extra = extra_bits(slot);
        const unsigned from_symbol = Aligned && extra >= aligned_footer_bits ? aligned_footer_bits : 0;
        rules[slot] = {slot_bases[slot], ~std::uint64_t{0} << from_symbol, 63 - extra,
                       slot < 3 ? 0 : offset_bits};
    }
    return rules;
}();

/// Copies a match from less than 16 bytes back: the pattern of `distance` bytes is built once and stored
/// repeatedly.
void repeat_pattern(std::uint8_t* to, std::uint32_t distance, std::uint32_t length) {
    const std::uint8_t* from = to - distance;
    if (distance >= 8) {
        for (std::uint32_t i = 0; i < length; i += 8)
            copy_8(to + i, from + i);
        return;
    }
    static constexpr std::uint8_t advances[8] = {0, 8, 8, 6, 8, 5, 6, 7}; ///< multiples of the distance
    std::uint64_t pattern = endian::load_le64(from) << (64 - 8 * distance) >> (64 - 8 * distance);
    for (std::uint32_t bits = 8 * distance; bits < 64; bits *= 2)
        pattern |= pattern << bits;
    const std::uint64_t in_memory = endian::load_le64(&pattern); // the pattern itself on most machines
    const std::uint32_t advance = advances[distance];
    for (std::uint32_t i = 0; i < length; i += advance)
        std::memcpy(to + i, &in_memory, sizeof in_memory);
}

} // namespace

struct fast_loop::run_state {
    frame_state& frame;
    const std::vector<std::uint8_t>& saved; ///< the old bytes where the loop writes
    std::uint32_t start;                    ///< window position of the first of them
    std::uint64_t queue; ///< the three offsets, 21 bits each, the first one lowest; the top bit is undefined
    bool room = true;    ///< whether the next token fits
};

void fast_loop::begin_block(const block_codes& codes) {
    usable = lanes.begin_block(codes);
    in_aligned = codes.aligned_table != nullptr;
    literal_lengths = codes.main_lengths;
}

void fast_loop::run(frame_state& frame, std::vector<std::uint8_t>& scratch) {
    if (!usable)
        return;
    for (const std::uint32_t offset : frame.offsets)
        if (offset == 0 || offset >= frame.window_size)
            return;
    scratch.assign(frame.window + frame.position, frame.window + frame.end + copy_step);
    run_state state{frame, scratch, frame.position,
                    frame.offsets[0] | std::uint64_t{frame.offsets[1]} << offset_bits |
                        std::uint64_t{frame.offsets[2]} << 2 * offset_bits};
    if (in_aligned)
        run_lanes<true>(state);
    else
        run_lanes<false>(state);
    for (unsigned i = 0; i < 3; ++i)
        frame.offsets[i] = static_cast<std::uint32_t>(state.queue >> i * offset_bits & offset_mask);
    std::memcpy(frame.window + frame.position, scratch.data() + (frame.position - state.start), copy_step);
}

template<bool Aligned>
void fast_loop::run_lanes(run_state& state) {
    frame_state& frame = state.frame;
    std::uint64_t token_bits = initial_token_bits;
    unsigned misses = 0;
    while (state.room && frame.next_bit < frame.input_end && misses < max_misses) {
        // An estimate of the rest of the block, then a part of it that fits the lists.
        const std::uint64_t whole =
            std::min(frame.input_end - frame.next_bit, (frame.end - frame.position) * token_bits);
        if (whole < token_lanes::lane_count * min_lane_bits)
            break;
        const std::uint64_t most = std::min(
            token_lanes::lane_count * token_list::capacity * token_bits * 7 / 8, token_lanes::max_bits);
        const std::uint64_t pieces = (whole + most - 1) / most;
        const std::uint64_t began = frame.next_bit;
        lanes.read<Aligned>(frame.words, began, whole / pieces / token_lanes::lane_count);

        std::uint64_t tokens = 0;
        token_position first{0, 0};
        for (unsigned k = 0; k < token_lanes::lane_count && state.room; ++k) {
            token_position next{0, 0};
            const bool is_last = k + 1 == token_lanes::lane_count;
            const bool synchronized = !is_last && lanes.synchronize<Aligned>(k, next);
            tokens += lanes.list(k).token_count - first.literal - first.match;
            execute_lane<Aligned>(state, k, first);
            if (!is_last && !synchronized) {
                ++misses;
                break;
            }
            first = next;
        }
        if (tokens != 0)
            token_bits = (frame.next_bit - began) / tokens;
    }
    while (state.room && frame.next_bit < frame.input_end) {
        lanes.read_sequential<Aligned>(frame.words, frame.next_bit, frame.input_end);
        execute_lane<Aligned>(state, 0, {0, 0});
    }
}

/// Executes the tokens of lane `k` from `first` on.
template<bool Aligned>
void fast_loop::execute_lane(run_state& state, unsigned k, token_position first) {
    token_list& list = lanes.list(k);
    // A match of length 0 makes the literals behind the last match part of the loop.
    list.matches[list.match_count] = entry::match(0, 0, 0, false);
    list.literals_before[list.match_count] = static_cast<std::uint16_t>(list.token_count - list.match_count);
    const token_position done = execute_tokens<Aligned>(state, list, first);
    state.room = done.match > list.match_count;
    if (state.room) {
        state.frame.next_bit = lanes.to_input_bit(list.chunk_next);
        return;
    }
    // The lane has read further: count the bits of what was executed.
    for (std::uint64_t i = first.literal; i != done.literal; ++i)
        state.frame.next_bit += literal_lengths[list.literals[i]];
    for (std::uint64_t i = first.match; i != done.match; ++i)
        state.frame.next_bit += entry::size(list.matches[i]);
}

/// Executes the tokens from `first` on, the list's last match included, up to the first that doesn't fit, and
/// returns the position of that.
template<bool Aligned>
token_position fast_loop::execute_tokens(run_state& state, const token_list& list, token_position first) {
    const frame_state& frame = state.frame;
    std::uint8_t* const window = frame.window;
    std::uint8_t* const end = window + frame.end;
    std::uint8_t* to = window + frame.position;
    const std::uint64_t window_mask = frame.window_size - 1;
    const std::uint64_t max_direct_offset = frame.window_size - wrap_margin;
    std::uint64_t queue = state.queue;
    std::uint64_t literal = first.literal;
    std::uint64_t match = first.match;
    const std::uint64_t last = list.match_count;
    for (; match <= last; ++match) {
        const entry::token token = list.matches[match];
        const std::uint64_t literals = list.literals_before[match] - literal;
        const std::uint64_t length = token >> entry::length_shift & entry::length_mask;
        if (literals + length > static_cast<std::uint64_t>(end - to)) [[unlikely]] {
            // Literals before the match that doesn't fit may fit.
            const std::uint64_t fit = std::min(literals, static_cast<std::uint64_t>(end - to));
            std::memcpy(to, list.literals + literal, fit);
            literal += fit;
            to += fit;
            break;
        }

        const std::uint64_t slot = token >> entry::slot_shift & entry::slot_mask;
        const slot_rule& rule = slot_rules<Aligned>[slot];
        std::uint64_t fresh = token >> 1 >> rule.shift;
        if constexpr (Aligned)
            fresh = (fresh & rule.mask) + (token >> entry::symbol_shift & entry::symbol_mask);
        queue = queue << rule.move | (fresh + rule.base);
        if (slot - 1 < 2) [[unlikely]] {
            // Swap the first offset with the second or third.
            const std::uint64_t shift = slot * offset_bits;
            const std::uint64_t change = (queue ^ queue >> shift) & offset_mask;
            queue ^= change ^ change << shift;
        }
        const std::uint64_t offset = queue & offset_mask;

        const std::uint8_t* const bytes = list.literals + literal;
        literal += literals;
        copy_16(to, bytes);
        std::uint8_t* const target = to + literals;
        const std::uint8_t* const from =
            window + ((static_cast<std::uint64_t>(target - window) - offset) & window_mask);
        // The top bit is set if one of the four is outside of what the plain steps handle.
        const std::uint64_t borders = (literal_step - literals) | (copy_step - length) |
                                      (offset - min_direct_offset) | (max_direct_offset - offset);
        if (borders >> 63) [[unlikely]] {
            for (std::uint64_t done = literal_step; done < literals; done += literal_step)
                copy_16(to + done, bytes + done);
            if (offset < min_direct_offset || offset > max_direct_offset) {
                copy_special(state, target, static_cast<std::uint32_t>(offset),
                             static_cast<std::uint32_t>(length));
            } else {
                for (std::uint64_t done = 0; done < length; done += copy_step) {
                    copy_16(target + done, from + done);
                    copy_16(target + done + 16, from + done + 16);
                }
            }
        } else {
            copy_16(target, from);
            copy_16(target + 16, from + 16);
        }
        to = target + length;
    }
    state.queue = queue;
    state.frame.position = static_cast<std::uint32_t>(to - window);
    return {literal, match};
}

/// Copies a match whose source is less than min_direct_offset behind the target or, round the window, less
/// than wrap_margin ahead of it.
void fast_loop::copy_special(const run_state& state, std::uint8_t* to, std::uint32_t offset,
                             std::uint32_t length) {
    const std::uint32_t window_mask = state.frame.window_size - 1;
    if (offset < min_direct_offset) {
        repeat_pattern(to, offset, length);
        return;
    }
    const auto position = static_cast<std::uint32_t>(to - state.frame.window);
    const std::uint32_t source = (position - offset) & window_mask;
    const bool ahead = source >= position;
    for (std::uint32_t i = 0; i < length; ++i) {
        const std::uint32_t at = source + i;
        to[i] = ahead && at - state.start < state.saved.size() ? state.saved[at - state.start]
                                                               : state.frame.window[at];
    }
}

} // namespace algorithm::lzx

#include "codec/lzx_decompressor.h"
#include "codec/lzx_fast_tables.h"

#include <algorithm>
#include <bit>
#include <cstring>

// The fast loop decodes verbatim and aligned offset blocks in the middle of a frame.
//
// On entry: the window position is 257 or more, so that nothing written has to be mirrored; the trees of the
// block are complete; there is input and room enough for one round at least, or the loop does nothing. It
// ends, before a main symbol, where less than that is left, and in front of a match that would pass the end.
// On exit every member is what the exact loop would have there; a failure is left for that loop to find.
//
// Old bytes. Matches are copied in steps of 32 bytes and so spoil up to 31 bytes ahead of the window
// position, where the window still has its oldest bytes; these can be the source of the farthest matches. So
// what the loop will overwrite is kept aside; a match from a place less than `farthest_reserve` ahead takes
// its bytes from there, and the spoilt ones are put back in the end.
//
// Bits. `bits` has the next bit at its top, `count` of them valid; a refill makes that 56 or more. Between
// two refills: a literal from the table and a match from the table with up to 17 footer bits, or 14 and an
// aligned symbol. After a main symbol that the table doesn't settle there is a refill before the rest.
//
// What bounds it: a chain of shift, table load and shift for each symbol, some 9 cycles, 17 with an aligned
// symbol; the one branch that is hard to foretell, literal or match; and the source of a far match, which may
// be anywhere in the window and out of the near caches. Everything else is kept free of branches.

namespace algorithm::lzx {

namespace {

constexpr std::uint32_t step = 32;
constexpr std::uint32_t farthest_reserve = 64;
constexpr std::uint32_t shortest_plain = 16; ///< nearer sources overlap a 16-byte move

constexpr unsigned refilled = 56;
constexpr unsigned longest_footer = 17;
constexpr unsigned longest_aligned_footer = 14 + aligned_bits;
constexpr unsigned table_bits = fast_tables::main_index_bits;
static_assert(2 * table_bits + std::max(longest_footer, longest_aligned_footer) <= refilled);
static_assert(table_bits + maximum_code_length <= refilled, "a literal and a long main code");
static_assert(maximum_code_length + longest_aligned_footer <= refilled, "a length symbol and its footer");
static_assert(farthest_reserve >= step && fast_overhang >= 2 * step);

/// A round has at most two refills, of which each moves on by 7 bytes and reads 8. The exact loop fails where
/// a main symbol begins in a word behind the data; no symbol of a round is that far.
constexpr std::ptrdiff_t input_margin = 40;
static_assert(input_margin >= 2 * 7 + 8 + 2);

/// A round stores up to two literals before it looks at the room for a match.
constexpr std::uint32_t literal_margin = 2;

constexpr std::uint64_t offset_mask = (1u << entry::offset_bits) - 1;

/// Blocks below this size are not worth their tables.
constexpr std::uint32_t worthwhile_block = 1024;

std::uint64_t load_64(const std::uint8_t* from) {
    std::uint64_t value;
    std::memcpy(&value, from, 8);
    return value;
}

void store_64(std::uint8_t* to, std::uint64_t value) {
    std::memcpy(to, &value, 8);
}

std::uint64_t big_endian_64(const std::uint8_t* from) {
    std::uint64_t v = load_64(from);
    if constexpr (std::endian::native == std::endian::little) {
        v = (v & 0x00FF00FF00FF00FF) << 8 | (v >> 8 & 0x00FF00FF00FF00FF);
        v = (v & 0x0000FFFF0000FFFF) << 16 | (v >> 16 & 0x0000FFFF0000FFFF);
        v = v << 32 | v >> 32;
    }
    return v;
}

std::uint32_t load_word_16(const std::uint8_t* from) {
    return static_cast<std::uint32_t>(from[0] | from[1] << 8);
}

void move_16(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 16);
}

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

unsigned walk(std::uint64_t bits, const std::int16_t* table, const tree_links* links, unsigned index_bits) {
    int value = table[bits >> (64 - index_bits)];
    for (unsigned next = 63 - index_bits; value < 0; --next)
        value = bits >> next & 1 ? links[-value].right : links[-value].left;
    return static_cast<unsigned>(value);
}

} // namespace

/// Makes a big-endian bit stream of the frame's words, eight bytes at a time.
void decompressor::exchange_bytes(std::vector<std::uint8_t>& swapped, unsigned parity) const {
    const std::size_t needed = static_cast<std::size_t>(input_limit - input_buffer.data()) + 8;
    if (swapped.size() < needed + 8)
        swapped.resize(needed + 8);
    const std::uint8_t* const from = input_buffer.data();
    std::uint8_t* const to = swapped.data();
    for (std::size_t i = parity; i < needed; i += 8) {
        const std::uint64_t words = load_64(from + i);
        store_64(to + i, (words & 0x00FF00FF00FF00FF) << 8 | (words >> 8 & 0x00FF00FF00FF00FF));
    }
}
static_assert(spare_input >= look_ahead + 8 + 8 + 1, "the last step may begin at the end of what is needed");

void decompressor::decode_fast(std::uint32_t end) {
    if (window_position < longest_match || block_size < worthwhile_block)
        return;
    for (const std::uint32_t offset : {R0, R1, R2})
        if (offset == 0 || offset >= window_size)
            return;
    const std::uint8_t* data_end = input_limit - look_ahead;
    if (data_end - input_position < 2 * input_margin || end - window_position < 2 * literal_margin)
        return;
    if (!fast)
        fast = std::make_unique<fast_tables>();
    const bool aligned = block_type == aligned_block;
    if (!fast->ready) {
        fast->ready = true;
        fast->usable = fast->build(main_lengths, literal_symbols + headers_per_slot * position_slots,
                                   length_lengths, aligned);
        for (unsigned i = 0; i < 1u << aligned_bits; ++i)
            fast->aligned[(1u << aligned_bits) + i] = static_cast<std::int16_t>(
                (aligned_table[i] - static_cast<int>(i >> 4)) * 64 + aligned_lengths[aligned_table[i]]);
    }
    if (!fast->usable)
        return;

    const std::uint8_t* words = input_position - look_ahead;
    const auto parity = static_cast<unsigned>(words - input_buffer.data()) % 2;
    if (!fast->swapped_ready[parity]) {
        exchange_bytes(fast->swapped[parity], parity);
        fast->swapped_ready[parity] = true;
    }

    const std::uint32_t start = window_position;
    fast->kept.assign(window.get() + start, window.get() + end + step);
    if (aligned)
        run_fast_loop<true>(end);
    else
        run_fast_loop<false>(end);
    std::memcpy(window.get() + window_position, fast->kept.data() + (window_position - start), step);
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

template<bool Aligned>
void decompressor::run_fast_loop(std::uint32_t end) {
    const fast_tables& tables = *fast;
    const std::uint32_t start = window_position;
    std::uint8_t* const base = window.get();
    const std::uint64_t mask = window_mask;
    const std::uint64_t plain_offsets = window_size - farthest_reserve - shortest_plain;

    const std::uint8_t* const words = input_position - look_ahead;
    const auto& swapped = tables.swapped[static_cast<unsigned>(words - input_buffer.data()) % 2];
    const std::uint8_t* const in_start = swapped.data() + (words - input_buffer.data());
    const std::uint8_t* const in_stop =
        swapped.data() + (input_limit - look_ahead - input_buffer.data()) - input_margin;
    const std::uint8_t* in = in_start;

    std::uint64_t bits = 0;
    std::uint64_t count = 0;
    // The three offsets, the first one lowest, under a bit of 0.
    std::uint64_t queue =
        R0 | std::uint64_t{R1} << entry::offset_bits | std::uint64_t{R2} << 2 * entry::offset_bits;
    std::uint64_t position = start;
    const std::uint64_t literal_stop = end - literal_margin;

    const auto refill = [&] {
        bits |= big_endian_64(in) >> count;
        in += (63 ^ count) >> 3;
        count |= refilled;
    };
    const auto drop = [&](std::uint64_t n) {
        bits <<= n & entry::bits_mask;
        count = (count - n) & entry::bits_mask;
    };

    const auto next_entry = [&] { return tables.main[bits >> (64 - table_bits)]; };
    const auto store_literal = [&](entry::type e) {
        drop(e);
        base[position++] = static_cast<std::uint8_t>(e >> entry::byte_shift);
    };

    refill();
    drop(16u - static_cast<unsigned>(bits_left));
    refill();
    entry::type e = next_entry();
    while (in <= in_stop && position <= literal_stop) {
        if (e & entry::literal) {
            store_literal(e);
            e = next_entry();
            if (e & entry::literal) {
                store_literal(e);
                refill();
                e = next_entry();
                continue;
            }
        }
        std::uint64_t length = e >> entry::length_shift & entry::length_mask;
        if (length > end - position)
            break;
        if ((e & entry::bits_mask) == 0) [[unlikely]] {
            const std::uint64_t bits_before = bits;
            const std::uint64_t count_before = count;
            const std::uint8_t* const in_before = in;
            auto slot = static_cast<unsigned>(e >> entry::special_slot_shift & entry::bits_mask);
            unsigned header = long_header;
            auto code = static_cast<unsigned>(e >> entry::code_shift & entry::bits_mask);
            if (code == 0) {
                const unsigned symbol = walk(bits, main_table, main_links, main_bits);
                code = main_lengths[symbol];
                if (symbol < literal_symbols) {
                    drop(code);
                    base[position++] = static_cast<std::uint8_t>(symbol);
                    refill();
                    e = next_entry();
                    continue;
                }
                slot = (symbol - literal_symbols) / headers_per_slot;
                header = (symbol - literal_symbols) % headers_per_slot;
            }
            drop(code);
            refill();
            if (header == long_header) {
                const std::uint16_t l = tables.length[bits >> (64 - fast_tables::length_index_bits)];
                unsigned further = l & 0xFF;
                unsigned further_code = l >> 8;
                if (l == fast_tables::long_code) {
                    further = walk(bits, length_table, length_links, length_bits);
                    further_code = length_lengths[further];
                }
                drop(further_code);
                header += further;
            }
            length = header + minimum_match;
            if (length > end - position) {
                bits = bits_before;
                count = count_before;
                in = in_before;
                break;
            }
            e = fast_tables::match(slot, 0, 0, Aligned);
        }

        std::uint64_t footer = bits << (e >> entry::code_shift & entry::bits_mask) >> 1 >>
                               (e >> entry::footer_shift & entry::bits_mask);
        const entry::type now = e;
        if constexpr (Aligned) {
            bits <<= e & entry::bits_mask;
            const std::int64_t low = tables.aligned[(bits >> (64 - aligned_bits)) + 2 * (e & entry::aligned)];
            bits <<= low & entry::bits_mask;
            count = (count - e - static_cast<std::uint64_t>(low)) & entry::bits_mask;
            footer += static_cast<std::uint64_t>(low >> 6);
        } else {
            drop(e);
        }
        refill();
        e = next_entry();

        const std::uint64_t where = now >> entry::queue_shift & entry::bits_mask;
        const std::uint64_t offset = (queue >> where & offset_mask) + (now >> entry::base_shift) + footer;
        queue <<= now >> entry::move_shift & entry::bits_mask;
        const std::uint64_t change = (queue & offset_mask) ^ offset;
        queue = (queue ^ change ^ change << where) & ~(std::uint64_t{1} << 63);

        std::uint8_t* const to = base + position;
        if (offset - shortest_plain < plain_offsets) [[likely]] {
            const std::uint8_t* from = base + ((position - offset) & mask);
            move_16(to, from);
            move_16(to + 16, from + 16);
            for (std::uint64_t done = step; done < length; done += step) {
                move_16(to + done, from + done);
                move_16(to + done + 16, from + done + 16);
            }
        } else {
            copy_unusual(start, static_cast<std::uint32_t>(position), static_cast<std::uint32_t>(offset),
                         static_cast<std::uint32_t>(length));
        }
        position += length;
    }

    R0 = static_cast<std::uint32_t>(queue & offset_mask);
    R1 = static_cast<std::uint32_t>(queue >> entry::offset_bits & offset_mask);
    R2 = static_cast<std::uint32_t>(queue >> 2 * entry::offset_bits);
    window_position = static_cast<std::uint32_t>(position);
    const auto used = static_cast<unsigned>(8 * (in - in_start)) - static_cast<unsigned>(count);
    const std::uint8_t* const word = words + used / 16 * 2;
    input_position = word + 4;
    bits_left = static_cast<std::int8_t>(16 - used % 16);
    bit_buffer = (load_word_16(word) << 16 | load_word_16(word + 2)) << used % 16;
}

} // namespace algorithm::lzx

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
// two refills: two lookups of main_index_bits each and one match from the table with up to 17 footer bits, or
// 14 and an aligned symbol. A length symbol that is not in the main table, or a long code, comes after a
// refill of its own.

namespace algorithm::lzx {

namespace {

constexpr std::uint32_t step = 32;
constexpr std::uint32_t farthest_reserve = 64;
constexpr std::uint32_t shortest_plain = 16; ///< nearer sources overlap a 16-byte move

constexpr unsigned refilled = 56;
constexpr unsigned longest_footer = 17;
constexpr unsigned longest_aligned_footer = 14 + aligned_bits;
constexpr unsigned table_bits = fast_tables::main_index_bits;
static_assert(2 * table_bits + table_bits + std::max(longest_footer, longest_aligned_footer) <= refilled);
static_assert(2 * table_bits + maximum_code_length <= refilled, "a long main code");
static_assert(maximum_code_length + longest_aligned_footer <= refilled, "a length symbol and its footer");
static_assert(farthest_reserve >= step && fast_overhang >= 2 * step);

/// One round takes at most two table lookups, a long main code, a long length code and a footer, and three
/// refills, of which each moves on by 7 bytes and reads 8. The exact loop asks for a word of look-ahead at
/// each main symbol; whoever is that far from the end has it.
constexpr std::ptrdiff_t input_margin = 40;
static_assert(input_margin >= 3 * 7 + 8 + 4);

/// A round stores up to six literals before it looks at the room for a match.
constexpr std::ptrdiff_t literal_margin = 8;
static_assert(literal_margin > 3 * 2);

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

void decompressor::decode_fast(std::uint32_t end) {
    if (window_position < longest_match || block_size < worthwhile_block)
        return;
    const std::uint8_t* data_end = input_limit - 4;
    if (data_end - input_position < 2 * input_margin || end - window_position < 2 * literal_margin)
        return;
    if (!fast)
        fast = std::make_unique<fast_tables>();
    const bool aligned = block_type == 2;
    if (!fast->ready) {
        fast->ready = true;
        fast->usable = fast->build(main_lengths, literal_symbols + headers_per_slot * position_slots,
                                   length_lengths, aligned);
        for (unsigned i = 0; i < 1u << aligned_bits; ++i)
            fast->aligned[i] =
                static_cast<std::uint16_t>(aligned_lengths[aligned_table[i]] << 8 | aligned_table[i]);
    }
    if (!fast->usable)
        return;

    const std::uint8_t* words = input_position - 4;
    const auto parity = static_cast<unsigned>(words - input_buffer.data()) % 2;
    if (!fast->swapped_ready[parity]) {
        auto& swapped = fast->swapped[parity];
        const std::size_t needed = static_cast<std::size_t>(input_limit - input_buffer.data()) + 8;
        if (swapped.size() < needed)
            swapped.resize(needed);
        for (std::size_t i = parity; i + 1 < needed; i += 2) {
            swapped[i] = input_buffer[i + 1];
            swapped[i + 1] = input_buffer[i];
        }
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
    std::uint8_t* out = base + start;
    std::uint8_t* const out_end = base + end;
    std::uint8_t* const out_stop = out_end - literal_margin;
    const std::uint32_t mask = window_mask;
    const std::uint32_t plain_offsets = window_size - farthest_reserve - shortest_plain;

    const std::uint8_t* const words = input_position - 4;
    const auto& swapped = tables.swapped[static_cast<unsigned>(words - input_buffer.data()) % 2];
    const std::uint8_t* const in_start = swapped.data() + (words - input_buffer.data());
    const std::uint8_t* const in_stop =
        swapped.data() + (input_limit - 4 - input_buffer.data()) - input_margin;
    const std::uint8_t* in = in_start;

    std::uint64_t bits = 0;
    unsigned count = 0;
    std::uint32_t r0 = R0;
    std::uint32_t r1 = R1;
    std::uint32_t r2 = R2;

    const auto refill = [&] {
        bits |= big_endian_64(in) >> count;
        in += (63 - count) >> 3;
        count |= refilled;
    };
    const auto drop = [&](unsigned n) {
        bits <<= n & entry::drop_mask;
        count -= n & entry::drop_mask;
    };
    const auto next_entry = [&] { return tables.main[bits >> (64 - table_bits)]; };
    const auto store_literals = [&](std::uint32_t e) {
        drop(e);
        const auto both = static_cast<std::uint16_t>(e >> entry::first_shift);
        out[0] = static_cast<std::uint8_t>(both);
        out[1] = static_cast<std::uint8_t>(both >> 8);
        out += e >> entry::count_shift & entry::count_mask;
    };

    refill();
    drop(16u - static_cast<unsigned>(bits_left));
    refill();
    std::uint32_t e = next_entry();
    while (in <= in_stop && out <= out_stop) {
        if (e & entry::literal) {
            store_literals(e);
            e = next_entry();
            if (e & entry::literal) {
                store_literals(e);
                e = next_entry();
                if (e & entry::literal) {
                    store_literals(e);
                    refill();
                    e = next_entry();
                    continue;
                }
            }
        }
        const std::uint64_t bits_before = bits;
        const unsigned count_before = count;
        const std::uint8_t* const in_before = in;
        if (e & entry::special) {
            unsigned slot = e >> entry::slot_shift & entry::slot_mask;
            unsigned header = long_header;
            unsigned code = e >> entry::code_shift & entry::code_mask;
            if (code == 0) {
                const unsigned symbol = walk(bits, main_table, main_links, main_bits);
                code = main_lengths[symbol];
                if (symbol < literal_symbols) {
                    drop(code);
                    *out++ = static_cast<std::uint8_t>(symbol);
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
            e = fast_tables::match(slot, header + minimum_match, 0, Aligned);
        }
        const std::uint32_t length = e >> entry::length_shift & entry::length_mask;
        if (length > static_cast<std::uint32_t>(out_end - out)) {
            bits = bits_before;
            count = count_before;
            in = in_before;
            break;
        }
        const unsigned code = e >> entry::code_shift & entry::code_mask;
        const unsigned extra = (e & entry::drop_mask) - code;
        auto footer = static_cast<std::uint32_t>(bits << code >> 1 >> (63 - extra));
        drop(e);
        if constexpr (Aligned) {
            // Without a branch: which matches have an aligned symbol is hard to foretell.
            const std::uint32_t has = e & entry::aligned ? 0xFFFFFFFF : 0;
            const std::uint32_t low = tables.aligned[bits >> (64 - aligned_bits)] & has;
            drop(low >> 8);
            footer = (footer << (has & 3)) + (low & 7);
        }
        refill();
        const unsigned slot = e >> entry::slot_shift & entry::slot_mask;
        e = next_entry();

        std::uint32_t offset = slot_bases[slot] + footer;
        offset = slot == 0 ? r0 : offset;
        offset = slot == 1 ? r1 : offset;
        offset = slot == 2 ? r2 : offset;
        r2 = slot == 2 ? r0 : slot >= 3 ? r1 : r2;
        r1 = slot == 1 || slot >= 3 ? r0 : r1;
        r0 = offset;

        const auto position = static_cast<std::uint32_t>(out - base);
        if (offset - shortest_plain < plain_offsets) [[likely]] {
            const std::uint8_t* from = base + ((position - offset) & mask);
            move_16(out, from);
            move_16(out + 16, from + 16);
            for (std::uint32_t done = step; done < length; done += step) {
                move_16(out + done, from + done);
                move_16(out + done + 16, from + done + 16);
            }
        } else {
            copy_unusual(start, position, offset, length);
        }
        out += length;
    }

    R0 = r0;
    R1 = r1;
    R2 = r2;
    window_position = static_cast<std::uint32_t>(out - base);
    const auto used = static_cast<unsigned>(8 * (in - in_start)) - count;
    const std::uint8_t* const word = words + used / 16 * 2;
    input_position = word + 4;
    bits_left = static_cast<std::int8_t>(16 - used % 16);
    bit_buffer = (load_word_16(word) << 16 | load_word_16(word + 2)) << used % 16;
}

} // namespace algorithm::lzx

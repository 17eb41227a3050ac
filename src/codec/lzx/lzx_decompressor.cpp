#include "codec/lzx/lzx_decompressor.h"

#include "codec/lzx/lzx_fast_loop.h"
#include "codec/lzx/lzx_translation.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace algorithm::lzx {

namespace {

/// How far the input position is ahead of the word with the next bit, and the limit of the data's end.
constexpr unsigned look_ahead = 4;

/// Zeros behind the compressed bytes. The farthest read: a raw block's header may begin one byte before the
/// data's end and takes 12, and the bit buffer then takes 4 more. A main symbol begins before the limit, and
/// it, its length symbol and its footer take no more than 4 words behind it.
constexpr unsigned spare_input = 32;
static_assert(spare_input >= 11 + look_ahead && spare_input >= look_ahead + 4 * 2);
/// The fast loop looks at whole words, and at some more.
static_assert(spare_input >= 1 + 2 * token_lanes::further_words);

constexpr std::uint32_t state_start = 1;
constexpr std::uint32_t state_decoding = 2;

constexpr std::uint32_t largest_window = 1u << 21;

/// Window bytes that stand again behind its end, so that a match may run over it without a test for each
/// byte.
constexpr std::uint32_t mirrored_bytes = longest_match;
constexpr std::uint32_t overhang = 261;
static_assert(overhang >= mirrored_bytes);

/// Beside the window a decoder shall take no more than 200 KiB: at the usual frame size the objects, a
/// compressed frame and one to translate.
constexpr std::size_t usual_frame = 32768;
constexpr std::size_t usual_growth = 6144;
static_assert(sizeof(decompressor) + sizeof(fast_loop) + 2 * usual_frame + usual_growth <= 200 * 1024);

std::uint32_t load_16(const std::uint8_t* from) {
    return static_cast<std::uint32_t>(from[0] | from[1] << 8);
}

} // namespace

decompressor::decompressor(std::uint32_t size) : window_size(size), window_mask(size - 1) {
    if (!std::has_single_bit(size) || size > largest_window)
        throw exception("Invalid compression window size", "algorithm::lzx::decompressor");
    // Zeros: a match may reach before the first byte.
    window = std::make_unique<std::uint8_t[]>(std::size_t{size} + overhang + fast_loop::overhang);
    position_slots = static_cast<std::uint8_t>(count_slots(size));
}

decompressor::~decompressor() = default;

std::int64_t decompressor::process_block(stream::input& input, stream::output& output,
                                         std::uint64_t compressed_size, std::uint64_t uncompressed_size) {
    const auto want = static_cast<std::uint32_t>(uncompressed_size);
    load_frame(input, static_cast<std::uint32_t>(compressed_size));
    if (want > window_size - window_position || !decode_frame(want))
        return -1;
    finish_frame(output, want);
    return want;
}

void decompressor::load_frame(stream::input& input, std::uint32_t size) {
    const std::size_t needed = std::size_t{size} + spare_input;
    if (input_buffer.size() < needed)
        input_buffer.resize(needed);
    const std::uint32_t came = input.read(reinterpret_cast<char*>(input_buffer.data()), size);
    std::memset(input_buffer.data() + came, 0, needed - came);
    input_position = input_buffer.data();
    input_limit = input_position + size + look_ahead;
}

bool decompressor::decode_frame(std::uint32_t want) {
    if (block_type != raw_block)
        start_bits();
    while (want > 0) {
        if (decoder_state == state_start) {
            if (!start_block())
                return false;
            decoder_state = state_decoding;
        }
        while (block_remaining > 0 && want > 0) {
            const std::uint32_t amount = std::min(static_cast<std::uint32_t>(block_remaining), want);
            if (!(block_type == raw_block ? decode_raw(amount) : decode_tree_block(amount)))
                return false;
            block_remaining -= static_cast<std::int32_t>(amount);
            want -= amount;
        }
        if (block_remaining == 0)
            decoder_state = state_start;
    }
    return true;
}

void decompressor::finish_frame(stream::output& output, std::uint32_t produced) {
    const std::uint32_t end = window_position == 0 ? window_size : window_position;
    const std::uint8_t* frame = window.get() + end - produced;
    if (translation_size != 0) {
        output_buffer.assign(frame, frame + produced);
        translate_calls(output_buffer.data(), produced, translation_size, instruction_position);
        frame = output_buffer.data();
    }
    output.write(reinterpret_cast<const char*>(frame), produced);
}

bool decompressor::start_block() {
    if (needs_translation_header) {
        needs_translation_header = false;
        translation_size = 0;
        if (read_checked(1) != 0) {
            const std::uint32_t high = read_checked(16);
            translation_size = high << 16 | read_checked(16);
        }
    }
    if (block_type == raw_block) {
        if (block_size % 2 != 0 && input_position < input_limit)
            ++input_position;
        block_type = 0;
        start_bits();
    }
    block_type = read_checked(3);
    block_size = read_checked(8) << 16;
    block_size |= read_checked(8) << 8;
    block_size |= read_checked(8);
    block_remaining = static_cast<std::int32_t>(block_size);

    switch (block_type) {
    case verbatim_block:
        return read_trees();
    case aligned_block:
        return read_aligned_tree() && read_trees();
    case raw_block:
        return read_raw_header();
    default:
        return false;
    }
}

bool decompressor::read_aligned_tree() {
    for (auto& length : aligned_lengths)
        length = static_cast<std::uint8_t>(read_checked(3));
    return !input_overrun && build_aligned_table(aligned_lengths, aligned_table);
}

bool decompressor::read_trees() {
    const unsigned offset_symbols = headers_per_slot * position_slots;
    const unsigned main_symbols = literal_symbols + offset_symbols;
    std::memcpy(previous_main_lengths, main_lengths, main_symbols);
    std::memcpy(previous_length_lengths, length_lengths, length_symbols);
    tables_ready = false;
    fast_ready = false;
    return read_lengths(main_lengths, previous_main_lengths, literal_symbols) &&
           read_lengths(main_lengths + literal_symbols, previous_main_lengths + literal_symbols,
                        offset_symbols) &&
           is_buildable(main_lengths, main_symbols) &&
           read_lengths(length_lengths, previous_length_lengths, length_symbols) &&
           is_buildable(length_lengths, length_symbols);
}

void decompressor::build_tables() {
    tables_ready = true;
    build_table(main_lengths, literal_symbols + headers_per_slot * position_slots, main_bits, main_table,
                main_links);
    build_table(length_lengths, length_symbols, length_bits, length_table, length_links);
}

bool decompressor::read_lengths(std::uint8_t* lengths, const std::uint8_t* previous, unsigned count) {
    std::uint8_t pre_lengths[pre_symbols];
    for (auto& length : pre_lengths)
        length = static_cast<std::uint8_t>(read_checked(4));
    std::int16_t table[1 << pre_bits];
    tree_links links[2 * pre_symbols];
    if (input_overrun || !build_table(pre_lengths, pre_symbols, pre_bits, table, links))
        return false;

    const auto decode = [&] {
        const unsigned symbol = look_up(table, links, pre_bits);
        consume_checked(pre_lengths[symbol]);
        return symbol;
    };
    // Lengths are deltas, modulo 17, on those of the last block that had trees.
    const auto new_length = [&](unsigned i, unsigned delta) {
        return static_cast<std::uint8_t>((previous[i] + maximum_code_length + 1 - delta) %
                                         (maximum_code_length + 1));
    };

    for (unsigned i = 0; i < count;) {
        const unsigned symbol = decode();
        if (input_overrun)
            return false;
        unsigned run = 1;
        std::uint8_t length = 0;
        if (symbol == 17) {
            run = read_checked(4) + 4;
        } else if (symbol == 18) {
            run = read_checked(5) + 20;
        } else {
            unsigned delta = symbol;
            if (symbol == 19) {
                run = read_checked(1) + 4;
                delta = decode();
                if (delta > maximum_code_length)
                    return false;
            }
            length = new_length(i, delta);
        }
        run = std::min(run, count - i);
        std::memset(lengths + i, length, run);
        i += run;
    }
    return !input_overrun;
}

bool decompressor::read_raw_header() {
    // The look-ahead's second word comes first in the stream; what is left of the first one is padding.
    input_position -= 2;
    if (input_limit - input_position <= 4)
        return false;
    for (std::uint32_t* offset : {&R0, &R1, &R2}) {
        *offset = load_16(input_position) | load_16(input_position + 2) << 16;
        input_position += 4;
    }
    return true;
}

bool decompressor::decode_raw(std::uint32_t amount) {
    if (input_limit - input_position < static_cast<std::ptrdiff_t>(amount))
        return false;
    std::memcpy(window.get() + window_position, input_position, amount);
    input_position += amount;
    if (window_position < mirrored_bytes) {
        const std::uint32_t stop = std::min(mirrored_bytes, window_position + amount);
        std::memcpy(window.get() + window_size + window_position, window.get() + window_position,
                    stop - window_position);
    }
    window_position = (window_position + amount) & window_mask;
    return true;
}

bool decompressor::decode_tree_block(std::uint32_t amount) {
    const std::uint32_t end = window_position + amount;
    if (window_position < mirrored_bytes && !decode_exactly<true>(std::min(mirrored_bytes, end), end))
        return false;
    if (!exact_only)
        decode_fast(end);
    if (!decode_exactly<false>(end, end))
        return false;
    window_position &= window_mask;
    return true;
}

/// The middle of the frame, as far as the fast loop serves it.
void decompressor::decode_fast(std::uint32_t end) {
    if (window_position < mirrored_bytes || block_size < fast_loop::worthwhile_block ||
        input_position >= input_limit)
        return;
    if (!fast)
        fast = std::make_unique<fast_loop>();
    if (!fast_ready) {
        fast_ready = true;
        fast->begin_block({main_lengths, literal_symbols + headers_per_slot * position_slots, length_lengths,
                           block_type == aligned_block ? aligned_table : nullptr, aligned_lengths});
    }
    // The exact loop fails where a main symbol begins in a word behind the data.
    const auto data_left = static_cast<std::uint64_t>(input_limit - input_position);
    frame_state frame{window.get(),
                      window_size,
                      window_position,
                      end,
                      {R0, R1, R2},
                      input_position - look_ahead,
                      16u - static_cast<unsigned>(bits_left),
                      (data_left + 1) / 2 * 16};
    fast->run(frame, output_buffer);
    R0 = frame.offsets[0];
    R1 = frame.offsets[1];
    R2 = frame.offsets[2];
    window_position = frame.position;
    const std::uint8_t* const word = frame.words + frame.next_bit / 16 * 2;
    input_position = word + look_ahead;
    bits_left = static_cast<std::int8_t>(16 - frame.next_bit % 16);
    bit_buffer = (load_16(word) << 16 | load_16(word + 2)) << frame.next_bit % 16;
}

/// Runs until `window_position` is at `stop` or, with the last match, behind it, but never behind `end`.
template<bool Mirrored>
bool decompressor::decode_exactly(std::uint32_t stop, std::uint32_t end) {
    if (!tables_ready && window_position < stop)
        build_tables();
    while (window_position < stop) {
        const unsigned symbol = look_up(main_table, main_links, main_bits);
        if (input_position >= input_limit)
            return false;
        consume(main_lengths[symbol]);
        if (symbol < literal_symbols) {
            window[window_position] = static_cast<std::uint8_t>(symbol);
            if (Mirrored)
                window[window_size + window_position] = static_cast<std::uint8_t>(symbol);
            ++window_position;
            continue;
        }
        unsigned header = (symbol - literal_symbols) % headers_per_slot;
        if (header == long_header) {
            const unsigned further = look_up(length_table, length_links, length_bits);
            consume(length_lengths[further]);
            header += further;
        }
        const std::uint32_t offset = use_offset((symbol - literal_symbols) / headers_per_slot);
        const std::uint32_t length = header + minimum_match;
        if (length > end - window_position)
            return false;
        copy_match<Mirrored>(offset, length);
    }
    return true;
}

/// One byte after the other, so that an overlap repeats what the match itself has written.
template<bool Mirrored>
void decompressor::copy_match(std::uint32_t offset, std::uint32_t length) {
    std::uint32_t source = (window_position - offset) & window_mask;
    for (; length > 0; --length, ++window_position, ++source) {
        if (Mirrored)
            source &= window_mask;
        const std::uint8_t byte = window[source];
        window[window_position] = byte;
        if (Mirrored && window_position < mirrored_bytes)
            window[window_size + window_position] = byte;
    }
}

std::uint32_t decompressor::read_offset(unsigned slot) {
    unsigned extra = extra_bits(slot);
    const bool aligned = block_type == aligned_block && extra >= 3;
    if (aligned)
        extra -= 3;
    std::uint32_t value = peek(extra);
    consume(extra);
    if (aligned) {
        const unsigned low = aligned_table[peek(aligned_bits)];
        consume(aligned_lengths[low]);
        value = value * 8 + low;
    }
    return slot_bases[slot] + value;
}

std::uint32_t decompressor::use_offset(unsigned slot) {
    switch (slot) {
    case 0:
        break;
    case 1:
        std::swap(R0, R1);
        break;
    case 2:
        std::swap(R0, R2);
        break;
    default:
        const std::uint32_t offset = read_offset(slot);
        R2 = R1;
        R1 = R0;
        R0 = offset;
    }
    return R0;
}

void decompressor::load_word() {
    bit_buffer |= load_16(input_position) << -bits_left;
    input_position += 2;
    bits_left = static_cast<std::int8_t>(bits_left + 16);
}

void decompressor::start_bits() {
    bit_buffer = load_16(input_position) << 16 | load_16(input_position + 2);
    input_position += 4;
    bits_left = 16;
}

void decompressor::consume(unsigned count) {
    bits_left = static_cast<std::int8_t>(bits_left - static_cast<int>(count));
    bit_buffer <<= count;
    while (bits_left <= 0)
        load_word();
}

void decompressor::consume_checked(unsigned count) {
    bits_left = static_cast<std::int8_t>(bits_left - static_cast<int>(count));
    bit_buffer <<= count;
    while (bits_left <= 0) {
        if (input_position >= input_limit) {
            input_overrun = true;
            return;
        }
        load_word();
    }
}

std::uint32_t decompressor::read_checked(unsigned count) {
    const std::uint32_t value = peek(count);
    consume_checked(count);
    return value;
}

unsigned decompressor::look_up(const std::int16_t* table, const tree_links* links, unsigned bits) const {
    int value = table[bit_buffer >> (32 - bits)];
    for (unsigned next = 31 - bits; value < 0; --next)
        value = bit_buffer >> next & 1 ? links[-value].right : links[-value].left;
    return static_cast<unsigned>(value);
}

} // namespace algorithm::lzx

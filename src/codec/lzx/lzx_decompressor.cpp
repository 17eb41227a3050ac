#include "codec/lzx/lzx_decompressor.h"

#include "codec/lzx/lzx_fast_loop.h"
#include "codec/lzx/lzx_translation.h"
#include "harbor6/groundwork/endian.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace algorithm::lzx {

namespace {

/// Bytes from the word with the next bit to the input position, and from the end of the data to the limit.
constexpr unsigned look_ahead = 4;

/// Zeros behind the compressed bytes. The farthest read: a raw block's header may begin one byte before the
/// data's end and takes 12, and the bit buffer then takes 4 more. A main symbol begins before the limit, and
/// it, its length symbol and its footer take no more than 4 words behind it.
constexpr unsigned spare_input = 32;
static_assert(spare_input >= 11 + look_ahead && spare_input >= look_ahead + 4 * 2);
/// The fast loop reads whole words, and some further ones.
static_assert(spare_input >= 1 + 2 * token_lanes::lookahead_words);

/// The window's first bytes that are mirrored behind its end, so that a match may run past it without a test
/// for each byte.
constexpr std::uint32_t mirrored_bytes = longest_match;
/// The window's bytes behind its end: the mirror and one word that nothing uses.
constexpr std::uint32_t overhang = mirrored_bytes + 4;

/// After so many frames translation ends, by the published rules.
constexpr std::uint32_t translated_frames = 32768;

/// Beside the window a decoder uses at most 200 KiB: at the usual frame size the objects, one compressed
/// frame and one to translate.
constexpr std::size_t usual_frame = 32768;
constexpr std::size_t scratch_growth = 6144;
static_assert(sizeof(decompressor) + sizeof(fast_loop) + 2 * usual_frame + scratch_growth <= 200 * 1024);

/// The 16-bit word at `from`, widened for shifts.
std::uint32_t word_at(const std::uint8_t* from) {
    return endian::load_le16(from);
}

} // namespace

decompressor::decompressor(std::uint32_t size) : window_size(size), window_mask(size - 1) {
    if (!std::has_single_bit(size) || size > largest_window)
        throw exception("Invalid compression window size", "algorithm::lzx::decompressor");
    // Zeros: a match may reach before the first byte.
    window = std::make_unique<std::uint8_t[]>(std::size_t{size} + overhang + fast_loop::window_padding);
    position_slots = static_cast<std::uint8_t>(count_slots(size));
}

decompressor::~decompressor() = default;

std::int64_t decompressor::process_block(stream::input& input, stream::output& output,
                                         std::uint64_t compressed_size, std::uint64_t uncompressed_size) {
    const auto want = static_cast<std::uint32_t>(uncompressed_size);
    load_frame(input, static_cast<std::uint32_t>(compressed_size));
    const auto used = window_used;
    window_used = window_size; // wherever it fails
    if (want > window_size - window_position || !decode_frame(want))
        return -1;
    window_used = std::max(used, window_position == 0 && want > 0 ? window_size : window_position);
    finish_frame(output, want);
    return want;
}

void decompressor::restart() {
    std::memset(window.get(), 0, window_used);
    std::memset(window.get() + window_size, 0, overhang + fast_loop::window_padding);
    R0 = R1 = R2 = 1;
    std::ranges::fill(main_lengths, std::uint8_t{0});
    std::ranges::fill(length_lengths, std::uint8_t{0});
    needs_translation_header = true;
    input_overrun = pad_byte_read = tables_ready = fast_ready = false;
    window_position = window_used = frames = 0;
    translation_size = instruction_position = 0;
    block_size = block_type = 0;
    block_remaining = 0;
    decoder_state = at_header;
}

void decompressor::load_frame(stream::input& input, std::uint32_t size) {
    const std::size_t needed = std::size_t{size} + spare_input;
    if (input_buffer.size() < needed)
        input_buffer.resize(needed);
    const std::uint32_t received = input.read(reinterpret_cast<char*>(input_buffer.data()), size);
    std::memset(input_buffer.data() + received, 0, needed - received);
    input_position = input_buffer.data();
    input_limit = input_position + size + look_ahead;
}

bool decompressor::decode_frame(std::uint32_t want) {
    if (block_type != raw_block)
        start_bits();
    while (want > 0) {
        if (decoder_state == at_header) {
            if (!start_block())
                return false;
            decoder_state = in_block;
        }
        while (block_remaining > 0 && want > 0) {
            const std::uint32_t amount = std::min(static_cast<std::uint32_t>(block_remaining), want);
            if (!(block_type == raw_block ? decode_raw(amount) : decode_tree_block(amount)))
                return false;
            block_remaining -= static_cast<std::int32_t>(amount);
            want -= amount;
        }
        if (block_remaining == 0)
            decoder_state = at_header;
    }
    if (published_rules && decoder_state == at_header && block_type == raw_block && block_size % 2 != 0)
        pad_byte_read = pad_byte_read || input_limit - input_position > look_ahead;
    return true;
}

void decompressor::finish_frame(stream::output& output, std::uint32_t produced) {
    const std::uint32_t end = window_position == 0 ? window_size : window_position;
    const std::uint8_t* frame = window.get() + end - produced;
    if (translation_size != 0 && !(published_rules && ++frames > translated_frames)) {
        output_buffer.assign(frame, frame + produced);
        translate_calls(output_buffer.data(), produced, translation_size, instruction_position,
                        published_rules);
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
        if (block_size % 2 != 0 && input_position < input_limit && !pad_byte_read)
            ++input_position;
        pad_byte_read = false;
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
    build_table(main_lengths, literal_symbols + headers_per_slot * position_slots, main_table_bits,
                main_table, main_links);
    build_table(length_lengths, length_symbols, length_table_bits, length_table, length_links);
}

bool decompressor::read_lengths(std::uint8_t* lengths, const std::uint8_t* previous, unsigned count) {
    std::uint8_t pre_lengths[pre_symbols];
    for (auto& length : pre_lengths)
        length = static_cast<std::uint8_t>(read_checked(4));
    std::int16_t table[1 << pre_table_bits];
    tree_links links[2 * pre_symbols];
    if (input_overrun || !build_table(pre_lengths, pre_symbols, pre_table_bits, table, links))
        return false;

    const auto decode = [&] {
        const unsigned symbol = look_up(table, links, pre_table_bits);
        consume_checked(pre_lengths[symbol]);
        return symbol;
    };
    // Lengths are deltas, modulo 17, on those of the last block that had trees.
    const auto new_length = [&](unsigned i, unsigned delta) {
        return static_cast<std::uint8_t>((previous[i] + length_modulus - delta) % length_modulus);
    };

    for (unsigned i = 0; i < count;) {
        const unsigned symbol = decode();
        if (input_overrun)
            return false;
        unsigned run = 1;
        std::uint8_t length = 0;
        if (symbol == zeros_run) {
            run = read_checked(4) + 4;
        } else if (symbol == long_zeros_run) {
            run = read_checked(5) + 20;
        } else {
            unsigned delta = symbol;
            if (symbol == same_run) {
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
    // The rest of the first look-ahead word is padding; the header begins with the second one.
    input_position -= 2;
    if (input_limit - input_position <= 4)
        return false;
    for (std::uint32_t* offset : {&R0, &R1, &R2}) {
        *offset = endian::load_le32(input_position);
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

/// Decodes the middle of the frame, as far as the fast loop can.
void decompressor::decode_fast(std::uint32_t end) {
    if (window_position < mirrored_bytes || block_size < fast_loop::smallest_block ||
        input_position >= input_limit)
        return;
    if (!fast)
        fast = std::make_unique<fast_loop>();
    if (!fast_ready) {
        fast_ready = true;
        fast->begin_block({main_lengths, literal_symbols + headers_per_slot * position_slots, length_lengths,
                           block_type == aligned_block ? aligned_table : nullptr, aligned_lengths});
    }
    // The exact loop fails when a main symbol begins in a word behind the data.
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
    bit_buffer = (word_at(word) << 16 | word_at(word + 2)) << frame.next_bit % 16;
}

/// Decodes until `window_position` reaches `stop`; the last match may pass it, but never `end`.
template<bool Mirrored>
bool decompressor::decode_exactly(std::uint32_t stop, std::uint32_t end) {
    if (!tables_ready && window_position < stop)
        build_tables();
    while (window_position < stop) {
        const unsigned symbol = look_up(main_table, main_links, main_table_bits);
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
            const unsigned further = look_up(length_table, length_links, length_table_bits);
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

/// Copies byte by byte, so that an overlap repeats bytes which the match itself has written.
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
    const bool aligned = block_type == aligned_block && extra >= aligned_footer_bits;
    if (aligned)
        extra -= aligned_footer_bits;
    std::uint32_t value = peek(extra);
    consume(extra);
    if (aligned) {
        const unsigned low = aligned_table[peek(aligned_table_bits)];
        consume(aligned_lengths[low]);
        value = (value << aligned_footer_bits) + low;
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
    bit_buffer |= word_at(input_position) << -bits_left;
    input_position += 2;
    bits_left = static_cast<std::int8_t>(bits_left + 16);
}

void decompressor::start_bits() {
    bit_buffer = word_at(input_position) << 16 | word_at(input_position + 2);
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

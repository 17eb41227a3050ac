#include "codec/deflate/deflate_decompressor.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>

namespace deflate {

namespace {

constexpr unsigned read_ahead = 65536;
constexpr std::int32_t lowest_extent = 10;
constexpr std::int32_t highest_extent = 25;
constexpr std::int32_t extended_extent = 16;
/// A sound stream may end with this many bytes of the bit buffer past the end of the input.
constexpr std::int32_t tolerated_ends = 4;

[[noreturn]] void fail(const char* message) {
    throw basic::algorithm_exception(message);
}

} // namespace

decompressor::decompressor(nio::input& source, nio::output& target)
    : transform(source, target), buffered(source, read_ahead), bits(buffered),
      code_length_table(code_length_symbols) {}

decompressor::~decompressor() = default;

void decompressor::run() {
    try {
        decode();
    } catch (...) {
        try {
            output->finish();
        } catch (...) {
            // The first failure is the one to report.
        }
        throw;
    }
    output->finish();
}

void decompressor::decode() {
    distance_table.emplace(distance_symbols);
    distance_table->flag = extent != 0;
    const std::int32_t window_extent = extent != 0 ? extent : input->get();
    if (window_extent < lowest_extent || window_extent > highest_extent)
        fail("bad deflate compression extent");
    maximum_match = extent == extended_extent ? longest_extended_match : longest_plain_match;
    window.set_up(static_cast<unsigned>(window_extent), maximum_match, *output);
    window.begin();
    code_table literal_table(literal_symbols);
    literal_table.flag = extent == extended_extent;
    fixed_codes_loaded = false;
    buffered.start();
    bits.start();

    bool final_block;
    do {
        final_block = bits.field(1) != 0;
        read_block(literal_table);
    } while (!final_block);
    window.flush();

    // seek() to the present position does nothing. That can't happen here while bytes are left to return:
    // after any block the bit buffer holds at least one whole byte of them.
    if (rewind)
        buffered.seek(buffered.tell() - bits.buffered_bytes());
}

void decompressor::read_block(code_table& literal_table) {
    block_type = static_cast<std::int32_t>(bits.field(2));
    switch (block_type) {
    case stored_block:
        start_stored_block();
        return decode_stored();
    case fixed_block:
        if (!fixed_codes_loaded) {
            set_fixed_lengths(literal_table);
            build_codes(literal_table);
        }
        fixed_codes_loaded = true;
        break;
    case dynamic_block:
        fixed_codes_loaded = false;
        read_dynamic_lengths(literal_table);
        build_codes(literal_table);
        break;
    default:
        fail("bad deflate block type");
    }
    decode_codes(literal_table);
}

void decompressor::build_codes(code_table& literal_table) {
    literal_table.build();
    distance_table->build();
    fast.codes_changed();
}

void decompressor::start_stored_block() {
    bits.finish();
    const std::uint32_t length = bits.field(16);
    const std::uint32_t complement = bits.field(16);
    if ((length ^ complement) != 0xFFFF)
        fail("deflate compressed data size mismatch");
    stored_remaining = length;
}

void decompressor::set_fixed_lengths(code_table& literal_table) {
    std::array<std::uint8_t, literal_symbols> lengths;
    std::fill(lengths.begin(), lengths.begin() + 144, std::uint8_t{8});
    std::fill(lengths.begin() + 144, lengths.begin() + 256, std::uint8_t{9});
    std::fill(lengths.begin() + 256, lengths.begin() + 280, std::uint8_t{7});
    std::fill(lengths.begin() + 280, lengths.end(), std::uint8_t{8});
    literal_table.assign(lengths);
    std::fill_n(lengths.begin(), 32, std::uint8_t{5});
    distance_table->assign({lengths.data(), 32});
}

void decompressor::read_dynamic_lengths(code_table& literal_table) {
    const unsigned literals = bits.field(5) + first_length_symbol;
    const unsigned distances = bits.field(distance_table->flag ? 5 : 6) + 1;
    if (distances > distance_symbols)
        fail("too many deflate codewords");
    const unsigned transmitted = bits.field(4) + 4;
    code_length_table.lengths.fill(0);
    for (unsigned i = 0; i < transmitted; ++i)
        code_length_table.lengths[code_length_order[i]] = static_cast<std::uint8_t>(bits.field(3));
    code_length_table.build();

    std::array<std::uint8_t, literal_symbols + distance_symbols> lengths;
    const auto list = std::span(lengths).first(literals + distances);
    read_code_lengths(list);
    literal_table.assign(list.first(literals));
    distance_table->assign(list.subspan(literals));
}

/// A run may continue from the literal into the distance part, and is cut off at the end of the list.
void decompressor::read_code_lengths(std::span<std::uint8_t> list) {
    std::size_t i = 0;
    if (!exact_only && bits.end_count == 0)
        i = fast.read_lengths(code_length_table, buffered, bits, list);
    while (i < list.size()) {
        const unsigned length = symbol(code_length_table);
        if (length < repeat_last) {
            list[i++] = static_cast<std::uint8_t>(length);
            continue;
        }
        if (length == repeat_last && i == 0)
            fail("bad deflate code length repeat");
        const std::uint8_t repeated = length == repeat_last ? list[i - 1] : std::uint8_t{0};
        const row& run = repeat_rows[length - repeat_last];
        const std::size_t count = std::min<std::size_t>(run.base + bits.field(run.extra), list.size() - i);
        std::fill_n(list.begin() + static_cast<std::ptrdiff_t>(i), count, repeated);
        i += count;
    }
}

/// Doesn't test for the end of the input: the next code reports it, if there is one.
void decompressor::decode_stored() {
    while (stored_remaining > 0) {
        if (!exact_only)
            copy_stored();
        const auto byte = static_cast<unsigned char>(bits.field(8));
        window.make_room(1);
        window.put(byte);
        --stored_remaining;
    }
}

/// Copies the bytes of the bit buffer and most of the read-ahead at once, if there are enough of them. Leaves
/// at least one byte of the block, and in the read-ahead the bytes that filling the bit buffer for it takes.
void decompressor::copy_stored() {
    constexpr unsigned left_ahead = 8;
    constexpr unsigned minimum = 32;
    const auto ahead = buffered.ahead();
    if (bits.end_count != 0 || ahead.size() < left_ahead)
        return;
    const auto buffered_count = static_cast<unsigned>(bits.bit_count) / 8;
    const auto count = static_cast<unsigned>(std::min<std::size_t>(
        {stored_remaining - 1, window.room(), buffered_count + ahead.size() - left_ahead}));
    if (count < minimum)
        return;
    unsigned char* out = window.next();
    for (unsigned i = 0; i < buffered_count; ++i)
        *out++ = static_cast<unsigned char>(bits.bit_buffer >> 8 * i);
    std::copy_n(ahead.begin(), count - buffered_count, out);
    bits.start();
    buffered.pass(count - buffered_count);
    window.grow(count);
    stored_remaining -= count;
}

void decompressor::decode_codes(const code_table& literal_table) {
    const bool fast_form = !exact_only && distance_table->flag && !literal_table.flag;
    for (;;) {
        if (fast_form && bits.end_count == 0)
            fast.decode(literal_table, *distance_table, buffered, bits, window);
        const unsigned next = symbol(literal_table);
        if (next == end_of_block)
            return;
        if (next < end_of_block) {
            window.make_room(1);
            window.put(static_cast<unsigned char>(next));
        } else {
            copy_match(literal_table, next);
        }
    }
}

void decompressor::copy_match(const code_table& literal_table, unsigned length_symbol) {
    const unsigned index = length_symbol - first_length_symbol;
    if (index >= length_rows)
        fail("bad deflate length code");
    const bool extended = literal_table.flag && index == length_rows - 1;
    const std::uint32_t length =
        extended ? 3 + bits.field(16) : length_table[index].base + bits.field(length_table[index].extra);

    const bool plain = distance_table->flag && !literal_table.flag;
    const unsigned distance_symbol = symbol(*distance_table);
    if (plain && distance_symbol >= plain_distance_rows)
        fail("bad deflate distance code");
    const row& distance = distance_rows[distance_symbol];
    const std::uint32_t back = distance.base + bits.field(distance.extra) + 1;
    window.make_room(length);
    window.copy(back, length);
}

unsigned decompressor::symbol(const code_table& table) {
    if (bits.end_count > tolerated_ends)
        fail("incomplete deflate stream");
    bits.fill();
    const std::uint32_t value = bits.code();
    const unsigned length = table.length(value);
    bits.consume(length);
    return table.symbol(value, length);
}

} // namespace deflate

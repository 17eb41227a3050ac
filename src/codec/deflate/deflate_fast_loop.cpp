#include "codec/deflate/deflate_fast_loop.h"

#include "codec/deflate/deflate_wide_reader.h"

#include <algorithm>
#include <cstring>

namespace deflate {

namespace {

// An entry of a look-up table:
//
//   bits 0 to 7    length of the symbol in bits, extra bits included
//   bits 8 to 11   length of its code
//   bit 15         a literal
//   bits 16 to 30  the literal, the base of the length, or the base of the distance with its 1
//   bit 31         stop: a symbol for the exact loop; if no other bit is set, a code longer than the table's
//                  index
constexpr std::uint32_t is_literal = 1u << 15;
constexpr std::uint32_t is_stop = 1u << 31;
constexpr std::uint32_t long_code = is_stop;

constexpr std::uint32_t with_code(std::uint32_t entry, unsigned code_bits) {
    return entry + code_bits * 0x101;
}

constexpr std::uint32_t entry_of(std::uint32_t base, std::uint32_t extra) {
    return base << 16 | extra;
}

// The entries of all symbols with code length 0; with_code adds the length.

constexpr auto literal_symbol_entries = [] {
    std::array<std::uint32_t, literal_symbols> entries{};
    for (unsigned i = 0; i < literal_symbols; ++i) {
        const unsigned index = i - first_length_symbol;
        if (i < end_of_block)
            entries[i] = i << 16 | is_literal;
        else if (index < length_rows)
            entries[i] = entry_of(length_table[index].base, length_table[index].extra);
        else
            entries[i] = is_stop;
    }
    return entries;
}();

constexpr auto distance_symbol_entries = [] {
    std::array<std::uint32_t, distance_symbols> entries{};
    for (unsigned i = 0; i < distance_symbols; ++i)
        entries[i] =
            i < plain_distance_rows ? entry_of(distance_rows[i].base + 1, distance_rows[i].extra) : is_stop;
    return entries;
}();

/// The base of a run is its shortest length.
constexpr auto length_symbol_entries = [] {
    std::array<std::uint32_t, code_length_symbols> entries{};
    for (unsigned i = 0; i < repeat_last; ++i)
        entries[i] = i << 16 | is_literal;
    for (unsigned i = 0; i < repeat_rows.size(); ++i)
        entries[repeat_last + i] = entry_of(repeat_rows[i].base, repeat_rows[i].extra);
    return entries;
}();

constexpr unsigned bits_of(std::uint32_t entry) {
    return entry & 0xFF;
}

/// The base and the value of the extra bits.
std::uint32_t value_of(std::uint32_t entry, const wide_reader& reader) {
    return (entry >> 16) + static_cast<std::uint32_t>(reader.bits(bits_of(entry)) >> (entry >> 8 & 0x3F));
}

/// Enters every code of up to `width` bits at each index whose low bits are the code in stream order. The
/// table for codes up to one length is two copies of the table for the length before, with the new codes
/// entered.
void fill_entries(std::uint32_t* entries, unsigned width, const code_table& table,
                  const std::uint32_t* symbol_entries) {
    entries[0] = long_code;
    std::uint32_t code = 0; // its first bit lowest
    for (unsigned length = 1; length <= width; ++length) {
        const unsigned half = 1u << (length - 1);
        std::memcpy(entries + half, entries, half * sizeof *entries);
        const unsigned count = (table.limit[length] - table.limit[length - 1]) >> (longest_code - length);
        const std::uint32_t* symbols = table.symbols.data() + table.offset[length];
        for (unsigned i = 0; i < count; ++i) {
            entries[code] = with_code(symbol_entries[symbols[i]], length);
            std::uint32_t bit = half;
            for (; code & bit; bit >>= 1)
                code ^= bit;
            code |= bit;
        }
    }
}

/// The entry of a code of more than `width` bits, is_stop if there is no such code.
[[gnu::cold, gnu::noinline]] std::uint32_t
find_long(const code_table& table, unsigned width, std::uint64_t bits, const std::uint32_t* symbol_entries) {
    const std::uint32_t value = reversed_word(static_cast<std::uint32_t>(bits)) >> (32 - longest_code);
    for (unsigned length = width + 1; length <= longest_code; ++length)
        if (value < table.limit[length])
            return with_code(symbol_entries[table.symbol(value, length)], length);
    return is_stop;
}

constexpr unsigned piece = 8;
constexpr unsigned unconditional = 5 * piece; ///< copied without a test of the length
static_assert(history_window::overshoot >= unconditional);

void copy_piece(unsigned char* to, const unsigned char* from) {
    std::uint64_t word;
    static_assert(sizeof word == piece);
    std::memcpy(&word, from, piece);
    std::memcpy(to, &word, piece);
}

/// Copies in pieces no wider than the distance, and overwrites bytes behind a short match. For a distance
/// below a piece it first copies a multiple of the distance, and then continues from that many bytes back.
[[gnu::always_inline]] inline void copy_match(unsigned char* out, std::uint32_t distance,
                                              std::uint32_t length) {
    const unsigned char* from = out - distance;
    unsigned char* const end = out + length;
    if (distance >= piece) [[likely]] {
        for (unsigned i = 0; i < unconditional; i += piece)
            copy_piece(out + i, from + i);
        out += unconditional;
        from += unconditional;
    } else if (distance == 1) {
        const unsigned char byte = *from;
        for (; out < end; out += unconditional)
            std::memset(out, byte, unconditional);
    } else {
        const std::uint32_t multiple = distance * ((piece + distance - 1) / distance);
        for (std::uint32_t i = 0; i < multiple; ++i)
            out[i] = from[i];
        out += multiple;
        from = out - multiple;
    }
    for (; out < end; out += piece, from += piece)
        copy_piece(out, from);
}

} // namespace

std::size_t fast_loop::read_lengths(const code_table& lengths, nio::buffered_input& input, bit_input& bits,
                                    std::span<std::uint8_t> list) {
    // The lengths of this code are fields of three bits, so no code is longer.
    constexpr unsigned width = 7;
    std::array<std::uint32_t, 1u << width> entries;
    fill_entries(entries.data(), width, lengths, length_symbol_entries.data());

    wide_reader reader(input, bits);
    std::size_t done = 0;
    while (done < list.size() && reader.has(wide_reader::reach)) {
        reader.refill();
        const std::uint32_t entry = entries[reader.bits(width)];
        const std::uint32_t value = value_of(entry, reader);
        const bool repeats = with_code(length_symbol_entries[repeat_last], entry >> 8 & 0xF) == entry;
        if (entry & is_stop || (repeats && done == 0))
            break;
        reader.consume(bits_of(entry));
        if (entry & is_literal) {
            list[done++] = static_cast<std::uint8_t>(value);
            continue;
        }
        const std::size_t count = std::min<std::size_t>(value, list.size() - done);
        std::memset(list.data() + done, repeats ? list[done - 1] : 0, count);
        done += count;
    }
    reader.give_back();
    return done;
}

void fast_loop::build_tables(const code_table& literals, const code_table& distances) {
    fill_entries(literal_entries.data(), literal_bits, literals, literal_symbol_entries.data());
    fill_entries(distance_entries.data(), distance_bits, distances, distance_symbol_entries.data());
    tables_built = true;
}

// The dependency chain that bounds the speed is look-up, shift, look-up. All else runs in parallel, the
// refill too, because each round begins with its first entry already loaded. One refill is enough for three
// literals and the look-up after them, or for two literals, a length and the look-up of the distance; a
// second one for the distance and the look-up after it. BMI2 has shifts that take their count from any
// register, which makes the chain shorter.
[[gnu::always_inline]] inline void fast_loop::decode_symbols(const code_table& literals,
                                                             const code_table& distances,
                                                             nio::buffered_input& input, bit_input& bits,
                                                             history_window& window) {
    constexpr unsigned length_bits = longest_code + 5;
    constexpr unsigned back_bits = longest_code + 13;
    static_assert(3 * literal_bits + literal_bits <= wide_reader::refilled);
    static_assert(2 * literal_bits + length_bits + distance_bits <= wide_reader::refilled);
    static_assert(back_bits + literal_bits <= wide_reader::refilled);
    constexpr unsigned input_margin = 3 * wide_reader::reach; // one refill ahead of the loop, two in a round
    constexpr unsigned output_margin = 3 + longest_plain_match;

    wide_reader reader(input, bits);
    if (!reader.has(input_margin) || window.room() < output_margin)
        return;
    if (!tables_built)
        build_tables(literals, distances);
    unsigned char* out = window.next();
    unsigned char* const last_out = out + window.room() - output_margin;
    const unsigned char* const first_out = out - window.written();

    const auto look_up = [&] { return literal_entries[reader.bits(literal_bits)]; };
    const auto store = [&](std::uint32_t entry) {
        reader.consume(bits_of(entry));
        *out++ = static_cast<unsigned char>(entry >> 16);
    };

    reader.refill();
    std::uint32_t entry = look_up();
    while (reader.has(input_margin) && out <= last_out) {
        reader.refill();
        if (entry & is_literal) {
            store(entry);
            entry = look_up();
            if (entry & is_literal) {
                store(entry);
                entry = look_up();
                if (entry & is_literal) {
                    store(entry);
                    entry = look_up();
                    continue;
                }
            }
        }
        if (entry & is_stop) [[unlikely]] {
            if (entry == long_code)
                entry = find_long(literals, literal_bits, reader.bits(), literal_symbol_entries.data());
            if (entry & is_stop)
                break;
            if (entry & is_literal) {
                store(entry);
                entry = look_up();
                continue;
            }
        }
        const auto symbol_begin = reader.save();
        const std::uint32_t length = value_of(entry, reader);
        reader.consume(bits_of(entry));

        entry = distance_entries[reader.bits(distance_bits)];
        reader.refill();
        if (entry & is_stop) [[unlikely]] {
            if (entry == long_code)
                entry = find_long(distances, distance_bits, reader.bits(), distance_symbol_entries.data());
            if (entry & is_stop) {
                reader.restore(symbol_begin);
                break;
            }
        }
        const std::uint32_t distance = value_of(entry, reader);
        if (distance > static_cast<std::size_t>(out - first_out)) [[unlikely]] {
            reader.restore(symbol_begin);
            break;
        }
        reader.consume(bits_of(entry));
        entry = look_up();
        copy_match(out, distance, length);
        out += length;
    }
    reader.give_back();
    window.grow(static_cast<unsigned>(out - window.next()));
}

#if defined(__x86_64__)
[[gnu::target("bmi2")]] void fast_loop::decode_with_bmi2(const code_table& literals,
                                                         const code_table& distances,
                                                         nio::buffered_input& input, bit_input& bits,
                                                         history_window& window) {
    decode_symbols(literals, distances, input, bits, window);
}
#endif

void fast_loop::decode(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                       bit_input& bits, history_window& window) {
#if defined(__x86_64__)
    static const bool bmi2 = __builtin_cpu_supports("bmi2") != 0;
    if (bmi2 && use_bmi2)
        return decode_with_bmi2(literals, distances, input, bits, window);
#endif
    decode_symbols(literals, distances, input, bits, window);
}

} // namespace deflate

#include "codec/deflate_fast_loop.h"

#include "codec/bit_reversal.h"

#include <bit>
#include <cstring>

namespace deflate {

namespace {

// An entry of a look-up table:
//
//   bits 0 to 7    how many bits the symbol takes, its extra bits included
//   bits 8 to 15   how many of them are the code
//   bits 16 to 30  the literal, the base of the length, or the base of the distance with its 1
//   bit 31         stop: not for this loop, or not in this table
//
// Of a literal the second field is 0 and bit 15 is set; with bit 31 set, the whole of long_code means that
// the code is longer than the table is wide, anything else that the exact loop is to see the symbol.
constexpr std::uint32_t is_literal = 1u << 15;
constexpr std::uint32_t is_stop = 1u << 31;
constexpr std::uint32_t long_code = is_stop;

constexpr std::uint32_t entry_of(row what, unsigned code_bits) {
    return what.base << 16 | code_bits << 8 | (code_bits + what.extra);
}

constexpr std::uint32_t literal_entry(unsigned symbol, unsigned code_bits) {
    if (symbol < end_of_block)
        return symbol << 16 | is_literal | code_bits;
    const unsigned index = symbol - first_length_symbol;
    return index < length_rows ? entry_of(length_table[index], code_bits) : is_stop | 1;
}

constexpr std::uint32_t distance_entry(unsigned symbol, unsigned code_bits) {
    if (symbol >= plain_distance_rows)
        return is_stop | 1;
    const row& plain = distance_rows[symbol];
    return entry_of({plain.base + 1, plain.extra}, code_bits);
}

constexpr unsigned bits_of(std::uint32_t entry) {
    return entry & 0xFF;
}

/// The base and the value of the extra bits.
std::uint32_t value_of(std::uint32_t entry, std::uint64_t bits) {
    const std::uint64_t symbol_bits = bits & ((std::uint64_t{1} << bits_of(entry)) - 1);
    return (entry >> 16) + static_cast<std::uint32_t>(symbol_bits >> (entry >> 8 & 0xFF));
}

/// Enters every code of up to `width` bits, at each place whose low bits are the code as it stands in the
/// stream. A table for codes up to one length is the table for one less, twice, with the new codes put in.
template<class Entry>
void fill_entries(std::uint32_t* entries, unsigned width, const code_table& table, Entry entry) {
    entries[0] = long_code;
    std::uint32_t code = 0; // its first bit lowest
    for (unsigned length = 1; length <= width; ++length) {
        const unsigned half = 1u << (length - 1);
        std::memcpy(entries + half, entries, half * sizeof *entries);
        const unsigned count = (table.limit[length] - table.limit[length - 1]) >> (longest_code - length);
        const std::uint32_t* symbols = table.symbols.data() + table.offset[length];
        for (unsigned i = 0; i < count; ++i) {
            entries[code] = entry(symbols[i], length);
            std::uint32_t bit = half;
            for (; code & bit; bit >>= 1)
                code ^= bit;
            code |= bit;
        }
    }
}

/// The entry of a code of more than `width` bits, or is_stop where there is no such code.
template<class Entry>
std::uint32_t find_long(const code_table& table, unsigned width, std::uint64_t bits, Entry entry) {
    const std::uint32_t value = reversed_word(static_cast<std::uint32_t>(bits)) >> (32 - longest_code);
    for (unsigned length = width + 1; length <= longest_code; ++length)
        if (value < table.limit[length])
            return entry(table.symbol(value, length), length);
    return is_stop;
}

std::uint64_t load_word(const unsigned char* from) {
    std::uint64_t word;
    std::memcpy(&word, from, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        word = 0;
        for (unsigned i = 0; i < sizeof word; ++i)
            word |= std::uint64_t{from[i]} << 8 * i;
    }
    return word;
}

template<unsigned size>
void copy_piece(unsigned char* to, const unsigned char* from) {
    unsigned char piece[size];
    std::memcpy(piece, from, size);
    std::memcpy(to, piece, size);
}

constexpr unsigned wide = 16;
constexpr unsigned narrow = 8;

/// Copies in pieces no wider than the distance, and scribbles on up to two wide pieces behind the match. A
/// distance below 8 is first made longer by its own multiple: what is copied repeats with that too.
void copy_match(unsigned char* out, std::uint32_t distance, std::uint32_t length) {
    const unsigned char* from = out - distance;
    unsigned char* const end = out + length;
    if (distance >= wide) {
        copy_piece<wide>(out, from);
        copy_piece<wide>(out + wide, from + wide);
        while (end - out > 2 * wide) {
            out += 2 * wide;
            from += 2 * wide;
            copy_piece<wide>(out, from);
            copy_piece<wide>(out + wide, from + wide);
        }
        return;
    }
    if (distance == 1) {
        const unsigned char byte = *from;
        do {
            std::memset(out, byte, wide);
            out += wide;
        } while (out < end);
        return;
    }
    if (distance < narrow) {
        const std::uint32_t multiple = distance * ((narrow + distance - 1) / distance);
        for (std::uint32_t i = 0; i < multiple; ++i)
            out[i] = from[i];
        out += multiple;
        from = out - multiple;
    }
    while (out < end) {
        copy_piece<narrow>(out, from);
        out += narrow;
        from += narrow;
    }
}
static_assert(history_window::overshoot >= 2 * wide && history_window::overshoot >= 2 * narrow);

} // namespace

// A refill leaves at least 56 bits in the word. It serves three literals in a row, with 11 bits each, or,
// taken again behind one or two of them, a match of the longest codes: 15 + 5 and 15 + 13 bits. The chain
// that bounds the speed is look-up, shift, look-up; loads and stores of matches run beside it.
void fast_loop::run(const code_table& literals, const code_table& distances, nio::buffered_input& input,
                    bit_input& bits, history_window& window) {
    constexpr unsigned refilled = 56;
    static_assert(3 * literal_bits <= refilled);
    static_assert(longest_code + 5 + longest_code + 13 <= refilled);

    if (!ready) {
        fill_entries(literal_entries.data(), literal_bits, literals, literal_entry);
        fill_entries(distance_entries.data(), distance_bits, distances, distance_entry);
        ready = true;
    }

    const auto ahead = input.ahead();
    const unsigned char* in = ahead.data();
    const unsigned char* const last_in = in + ahead.size() - input_margin;
    unsigned char* out = window.next();
    unsigned char* const last_out = out + window.room() - output_margin;
    const unsigned char* const first_out = out - window.written();
    std::uint64_t word;
    unsigned count;
    bits.lend(word, count);

    const auto refill = [&] {
        word |= load_word(in) << count;
        in += (63 - count) >> 3;
        count |= refilled;
    };
    const auto consume = [&](std::uint32_t entry) {
        word >>= bits_of(entry);
        count -= bits_of(entry);
    };
    const auto next_literal = [&] { return literal_entries[word & ((1u << literal_bits) - 1)]; };
    const auto store = [&](std::uint32_t entry) {
        consume(entry);
        *out++ = static_cast<unsigned char>(entry >> 16);
    };

    while (in <= last_in && out <= last_out) {
        refill();
        std::uint32_t entry = next_literal();
        if (entry & is_literal) {
            store(entry);
            entry = next_literal();
            if (entry & is_literal) {
                store(entry);
                entry = next_literal();
                if (entry & is_literal) {
                    store(entry);
                    continue;
                }
            }
            refill();
        }
        if (entry & is_stop) [[unlikely]] {
            if (entry == long_code)
                entry = find_long(literals, literal_bits, word, literal_entry);
            if (entry & is_stop)
                break;
            if (entry & is_literal) {
                store(entry);
                continue;
            }
        }
        const std::uint64_t word_before = word;
        const unsigned count_before = count;
        const std::uint32_t length = value_of(entry, word);
        consume(entry);

        entry = distance_entries[word & ((1u << distance_bits) - 1)];
        if (entry == long_code) [[unlikely]]
            entry = find_long(distances, distance_bits, word, distance_entry);
        const std::uint32_t distance = value_of(entry, word);
        if (entry & is_stop || distance > static_cast<std::size_t>(out - first_out)) [[unlikely]] {
            word = word_before;
            count = count_before;
            break;
        }
        consume(entry);
        copy_match(out, distance, length);
        out += length;
    }

    const unsigned returned = bits.give(word, count);
    input.pass(static_cast<std::size_t>(in - ahead.data()) - returned);
    window.grow(static_cast<unsigned>(out - window.next()));
}

} // namespace deflate

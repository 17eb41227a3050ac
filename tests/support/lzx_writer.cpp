#include "support/lzx_writer.h"

#include <algorithm>
#include <bit>
#include <map>

namespace support {

namespace {

struct prefix_code {
    explicit prefix_code(const std::vector<std::uint8_t>& of) : lengths(of), codes(of.size()) {
        std::uint32_t next = 0;
        for (unsigned l = 1; l <= 16; ++l, next <<= 1)
            for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol)
                if (lengths[symbol] == l)
                    codes[symbol] = next++;
    }
    void put(lzx_writer& to, unsigned symbol) const { to.put(codes[symbol], lengths[symbol]); }

    std::vector<std::uint8_t> lengths;
    std::vector<std::uint32_t> codes;
};

} // namespace

std::vector<std::uint8_t> prefix_lengths(std::vector<std::uint32_t> counts, unsigned limit) {
    std::vector<std::uint8_t> lengths(counts.size());
    const auto unused = static_cast<std::size_t>(std::count(counts.begin(), counts.end(), 0u));
    if (unused == counts.size())
        return lengths;
    if (unused + 1 == counts.size())
        counts[counts[0] != 0] = 1;
    for (;;) {
        std::multimap<std::uint64_t, std::vector<std::size_t>> trees; // their symbols, by weight
        for (std::size_t i = 0; i < counts.size(); ++i)
            if (counts[i] != 0)
                trees.insert({counts[i], {i}});
        while (trees.size() > 1) {
            auto one = trees.extract(trees.begin());
            const auto other = trees.extract(trees.begin());
            one.key() += other.key();
            one.mapped().insert(one.mapped().end(), other.mapped().begin(), other.mapped().end());
            for (const auto symbol : one.mapped())
                ++lengths[symbol];
            trees.insert(std::move(one));
        }
        if (*std::max_element(lengths.begin(), lengths.end()) <= limit)
            return lengths;
        std::fill(lengths.begin(), lengths.end(), std::uint8_t{0});
        for (auto& count : counts)
            count = (count + 1) / 2;
    }
}

struct lzx_writer::item {
    unsigned main;
    int length = -1;
    int aligned = -1;
    unsigned extra = 0;
    std::uint32_t footer = 0;
    std::uint32_t size = 1;
};

lzx_writer::lzx_writer(unsigned window_bits, std::uint32_t frame_size)
    : main_literals(256), length_symbols(249), frame_bytes(frame_size) {
    const unsigned slots = window_bits == 21 ? 50 : window_bits == 20 ? 42 : 2 * window_bits;
    main_matches.resize(std::size_t{8} * slots);
}

void lzx_writer::put(std::uint32_t value, unsigned count) {
    while (count-- > 0) {
        word = word << 1 | (count < 32 ? value >> count & 1 : 0);
        if (++word_bits == 16)
            flush_bits(false);
    }
}

void lzx_writer::flush_bits(bool whole_word) {
    if (word_bits == 0 && !whole_word)
        return;
    word <<= 16 - word_bits;
    current.push_back(static_cast<char>(word & 0xFF));
    current.push_back(static_cast<char>(word >> 8 & 0xFF));
    word = 0;
    word_bits = 0;
}

void lzx_writer::advance(std::uint32_t count) {
    produced += count;
    if (produced < frame_bytes)
        return;
    flush_bits(false);
    frames.push_back({std::move(current), produced});
    current.clear();
    produced = 0;
}

std::vector<lzx_frame> lzx_writer::finish() {
    flush_bits(false);
    if (produced > 0 || !current.empty())
        frames.push_back({std::move(current), produced});
    return std::move(frames);
}

void lzx_writer::translation(std::uint32_t size) {
    first = false;
    put(size != 0, 1);
    if (size != 0) {
        put(size >> 16, 16);
        put(size & 0xFFFF, 16);
    }
}

void lzx_writer::header(unsigned type, std::uint32_t size) {
    if (first)
        translation(0);
    if (pad)
        current.push_back('\0');
    pad = false;
    put(type, 3);
    put(size, 24);
}

lzx_writer::item lzx_writer::code(const lzx_token& token, bool repeats) {
    if (token.length == 1)
        return {.main = token.value};
    item result{.main = 0, .size = token.length};
    unsigned slot = 0;
    while (repeats && slot < 3 && repeated[slot] != token.value)
        ++slot;
    if (repeats && slot < 3) {
        std::swap(repeated[0], repeated[slot]);
    } else {
        const std::uint32_t formatted = token.value + 2;
        const auto top = static_cast<unsigned>(std::bit_width(formatted)) - 1;
        result.extra = std::min(top - 1, 17u);
        slot = top < 18 ? 2 * top + (formatted >> (top - 1) & 1) : 34 + (formatted >> 17);
        if (formatted == 3) {
            slot = 3;
            result.extra = 0;
        }
        result.footer = formatted & ((1u << result.extra) - 1);
        repeated = {token.value, repeated[0], repeated[1]};
    }
    const unsigned beyond = token.length - 2;
    result.main = 256 + 8 * slot + std::min(beyond, 7u);
    if (beyond >= 7)
        result.length = static_cast<int>(beyond - 7);
    return result;
}

void lzx_writer::lengths(const std::vector<std::uint8_t>& wanted, std::vector<std::uint8_t>& previous,
                         bool runs) {
    struct op {
        unsigned symbol, extra, bits;
    };
    std::vector<op> ops;
    for (std::size_t i = 0; i < wanted.size();) {
        unsigned run = 1;
        while (i + run < wanted.size() && wanted[i + run] == wanted[i])
            ++run;
        const op single{static_cast<unsigned>(previous[i] + 17 - wanted[i]) % 17, 0, 0};
        if (!runs || run < 4)
            run = 1;
        else if (wanted[i] != 0)
            run = std::min(run, 5u), ops.push_back({19, run - 4, 1});
        else
            run = std::min(run, 51u), ops.push_back(run < 20 ? op{17, run - 4, 4} : op{18, run - 20, 5});
        if (run == 1 || wanted[i] != 0)
            ops.push_back(single);
        i += run;
    }
    std::vector<std::uint32_t> counts(20);
    for (const op& each : ops)
        ++counts[each.symbol];
    const prefix_code pre(prefix_lengths(counts, 15));
    for (const auto length : pre.lengths)
        put(length, 4);
    for (const op& each : ops) {
        pre.put(*this, each.symbol);
        put(each.extra, each.bits);
    }
    previous = wanted;
}

void lzx_writer::block(const std::vector<lzx_token>& tokens, const lzx_shape& shape) {
    std::vector<item> items;
    std::vector<std::uint32_t> main_counts(256 + main_matches.size()), length_counts(249), aligned_counts(8);
    std::uint32_t size = 0;
    for (const auto& token : tokens) {
        item next = code(token, shape.repeats);
        if (shape.aligned && next.extra >= 3) {
            next.aligned = static_cast<int>(next.footer & 7);
            next.footer >>= 3;
            next.extra -= 3;
            ++aligned_counts[static_cast<unsigned>(next.aligned)];
        }
        ++main_counts[next.main];
        if (next.length >= 0)
            ++length_counts[static_cast<unsigned>(next.length)];
        size += next.size;
        items.push_back(next);
    }
    const auto chosen = [](const auto& given, const auto& counts, unsigned limit) {
        return prefix_code(given.empty() ? prefix_lengths(counts, limit) : given);
    };
    const auto main = chosen(shape.main_lengths, main_counts, 16);
    const auto length = chosen(shape.length_lengths, length_counts, 16);
    const auto aligned = chosen(shape.aligned_lengths, aligned_counts, 7);

    header(shape.aligned ? 2 : 1, size);
    if (shape.aligned)
        for (const auto l : aligned.lengths)
            put(l, 3);
    const auto middle = main.lengths.begin() + 256;
    lengths({main.lengths.begin(), middle}, main_literals, shape.runs);
    lengths({middle, main.lengths.end()}, main_matches, shape.runs);
    lengths(length.lengths, length_symbols, shape.runs);
    for (const item& each : items) {
        main.put(*this, each.main);
        if (each.length >= 0)
            length.put(*this, static_cast<unsigned>(each.length));
        put(each.footer, each.extra);
        if (each.aligned >= 0)
            aligned.put(*this, static_cast<unsigned>(each.aligned));
        advance(each.size);
    }
}

void lzx_writer::raw(const std::string& bytes, const std::array<std::uint32_t, 3>& offsets) {
    header(3, static_cast<std::uint32_t>(bytes.size()));
    flush_bits(true);
    repeated = offsets;
    for (const std::uint32_t offset : offsets)
        for (unsigned shift = 0; shift < 32; shift += 8)
            current.push_back(static_cast<char>(offset >> shift & 0xFF));
    for (std::size_t at = 0; at < bytes.size();) {
        const auto part = std::min<std::size_t>(bytes.size() - at, frame_bytes - produced);
        current.append(bytes, at, part);
        advance(static_cast<std::uint32_t>(part));
        at += part;
    }
    pad = bytes.size() % 2 != 0;
}

} // namespace support

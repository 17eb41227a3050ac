#include "support/lzx_compress.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>

namespace support {

namespace {

constexpr std::uint32_t frame_bytes = 32768;
constexpr std::uint32_t longest = 257;

class matcher {
public:
    matcher(const std::string& text, const lzx_settings& settings)
        : bytes(text), reach((1u << settings.window_bits) - 3), chain(settings.chain),
          heads(1u << hash_bits, none), links(text.size(), none) {}

    std::vector<lzx_token> tokens(std::uint32_t from, std::uint32_t to) {
        std::vector<lzx_token> result;
        lzx_token ahead = best(from, to);
        for (std::uint32_t at = from; at < to;) {
            const lzx_token here = ahead;
            insert(at);
            if (at + 1 < to)
                ahead = best(at + 1, to);
            // A longer match one byte on is worth the literal.
            if (here.length < 2 || (here.length < 64 && at + 1 < to && ahead.length > here.length + 1)) {
                result.push_back({1, static_cast<unsigned char>(bytes[at++])});
                continue;
            }
            result.push_back(here);
            const auto again = std::find(repeated.begin(), repeated.end(), here.value);
            if (again == repeated.end())
                repeated = {here.value, repeated[0], repeated[1]};
            else
                std::swap(repeated[0], *again);
            for (std::uint32_t i = 1; i < here.length; ++i)
                insert(at + i);
            at += here.length;
            if (at < to)
                ahead = best(at, to);
        }
        return result;
    }

private:
    static constexpr unsigned hash_bits = 17;
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    std::uint32_t hash(std::uint32_t at) const {
        const auto* p = reinterpret_cast<const unsigned char*>(bytes.data()) + at;
        return (std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16) * 0x9E3779B1u >>
               (32 - hash_bits);
    }

    void insert(std::uint32_t at) {
        if (at + 3 > bytes.size())
            return;
        std::uint32_t& head = heads[hash(at)];
        links[at] = head;
        head = at;
    }

    std::uint32_t common(std::uint32_t a, std::uint32_t b, std::uint32_t limit) const {
        std::uint32_t n = 0;
        while (n < limit && bytes[a + n] == bytes[b + n])
            ++n;
        return n;
    }

    lzx_token best(std::uint32_t at, std::uint32_t to) const {
        const std::uint32_t limit = std::min({longest, to - at, frame_bytes - at % frame_bytes});
        lzx_token found{1, 0};
        for (const std::uint32_t offset : repeated)
            if (offset <= at)
                if (const auto n = common(at - offset, at, limit); n >= 2 && n > found.length)
                    found = {n, offset};
        if (limit < 3 || at + 3 > bytes.size())
            return found;
        std::uint32_t place = heads[hash(at)];
        for (unsigned tries = chain; tries > 0 && place != none && at - place <= reach; --tries) {
            const auto n = common(place, at, limit);
            const bool worth_it = n > 3 || (n == 3 && at - place < 4096);
            if (worth_it && n > found.length + (found.length > 1 && at - place > 4096)) {
                found = {n, at - place};
                if (n == limit)
                    break;
            }
            place = links[place];
        }
        return found;
    }

    const std::string& bytes;
    std::uint32_t reach;
    unsigned chain;
    std::vector<std::uint32_t> heads;
    std::vector<std::uint32_t> links;
    std::array<std::uint32_t, 3> repeated{1, 1, 1};
};

/// Whether coding the low three bits of the offsets saves more than its header.
bool low_bits_uneven(const std::vector<lzx_token>& tokens) {
    std::array<double, 8> counts{};
    double total = 0;
    for (const auto& token : tokens)
        if (token.length > 1 && token.value >= 14) {
            ++counts[(token.value + 2) & 7];
            ++total;
        }
    double bits = 24;
    for (const double count : counts)
        bits += count > 0 ? count * std::log2(total / count) : 0;
    return bits < 3 * total * 0.98;
}

} // namespace

void make_calls_absolute(char* frame, std::size_t length, std::uint32_t translation_size,
                         std::uint32_t position) {
    if (length <= 10)
        return;
    const std::uint32_t size = translation_size;
    for (std::size_t i = 0; i < length - 10;) {
        if (static_cast<unsigned char>(frame[i]) != 0xE8) {
            ++i;
            continue;
        }
        const std::uint32_t here = position + static_cast<std::uint32_t>(i);
        std::uint32_t value = 0;
        for (unsigned k = 0; k < 4; ++k)
            value |= static_cast<std::uint32_t>(static_cast<unsigned char>(frame[i + 1 + k])) << (8 * k);
        if (value + here < size)
            value += here;
        else if (here > 0 && size - value - 1 < here - 1)
            value -= size;
        for (unsigned k = 0; k < 4; ++k)
            frame[i + 1 + k] = static_cast<char>(value >> (8 * k));
        i += 5;
    }
}

std::vector<lzx_frame> lzx_compress(std::string bytes, const lzx_settings& settings) {
    lzx_writer writer(settings.window_bits);
    writer.translation(settings.translation_size);
    if (settings.translation_size != 0)
        for (std::size_t at = 0; at < bytes.size(); at += frame_bytes)
            make_calls_absolute(bytes.data() + at, std::min<std::size_t>(frame_bytes, bytes.size() - at),
                                settings.translation_size, static_cast<std::uint32_t>(at));
    matcher finder(bytes, settings);
    const auto size = static_cast<std::uint32_t>(bytes.size());
    for (std::uint32_t at = 0; at < size; at += settings.block_bytes) {
        const auto tokens = finder.tokens(at, std::min(size, at + settings.block_bytes));
        writer.block(tokens, {.aligned = low_bits_uneven(tokens)});
    }
    return writer.finish();
}

} // namespace support

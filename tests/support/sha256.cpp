#include "support/sha256.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

namespace support {

namespace {

using words = std::array<std::uint32_t, 8>;

/// The first 64 primes; the algorithm's constants are the fractions of their roots.
constexpr auto primes = [] {
    std::array<unsigned, 64> found{};
    std::size_t count = 0;
    for (unsigned n = 2; count < found.size(); ++n) {
        bool prime = true;
        for (std::size_t i = 0; i < count && prime; ++i)
            prime = n % found[i] != 0;
        if (prime)
            found[count++] = n;
    }
    return found;
}();

std::uint32_t fraction(long double root) {
    return static_cast<std::uint32_t>((root - std::floor(root)) * 4294967296.0L);
}

void add_block(words& state, const unsigned char* block) {
    static const auto constants = [] {
        std::array<std::uint32_t, 64> k{};
        for (std::size_t i = 0; i < k.size(); ++i)
            k[i] = fraction(std::cbrt(static_cast<long double>(primes[i])));
        return k;
    }();
    std::uint32_t w[64];
    for (unsigned i = 0; i < 16; ++i)
        w[i] = static_cast<std::uint32_t>(block[4 * i]) << 24 |
               static_cast<std::uint32_t>(block[4 * i + 1]) << 16 |
               static_cast<std::uint32_t>(block[4 * i + 2]) << 8 | block[4 * i + 3];
    for (unsigned i = 16; i < 64; ++i)
        w[i] = w[i - 16] + w[i - 7] + (std::rotr(w[i - 15], 7) ^ std::rotr(w[i - 15], 18) ^ w[i - 15] >> 3) +
               (std::rotr(w[i - 2], 17) ^ std::rotr(w[i - 2], 19) ^ w[i - 2] >> 10);
    auto [a, b, c, d, e, f, g, h] = state;
    for (unsigned i = 0; i < 64; ++i) {
        const std::uint32_t t1 = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) +
                                 ((e & f) ^ (~e & g)) + constants[i] + w[i];
        const std::uint32_t t2 =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g, g = f, f = e, e = d + t1, d = c, c = b, b = a, a = t1 + t2;
    }
    const words step = {a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] += step[i];
}

} // namespace

std::string sha256(std::string_view bytes) {
    words state;
    for (std::size_t i = 0; i < state.size(); ++i)
        state[i] = fraction(std::sqrt(static_cast<long double>(primes[i])));

    const std::size_t whole = bytes.size() / 64 * 64;
    for (std::size_t at = 0; at < whole; at += 64)
        add_block(state, reinterpret_cast<const unsigned char*>(bytes.data()) + at);
    std::string last(bytes.substr(whole));
    last += '\x80';
    last.append((120 - last.size() % 64) % 64, '\0');
    for (int shift = 56; shift >= 0; shift -= 8)
        last += static_cast<char>(static_cast<std::uint64_t>(bytes.size()) * 8 >> shift);
    for (std::size_t at = 0; at < last.size(); at += 64)
        add_block(state, reinterpret_cast<const unsigned char*>(last.data()) + at);

    std::string text;
    for (const std::uint32_t word : state)
        for (int shift = 28; shift >= 0; shift -= 4)
            text += "0123456789abcdef"[word >> shift & 15];
    return text;
}

} // namespace support

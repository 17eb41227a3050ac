#include "formats/cab/checksum.h"

#include <bit>
#include <cstring>

namespace format::cab {

namespace {

constexpr std::uint32_t byte_bits = 8;
constexpr std::uint32_t word_bits = 32;

// Lanes of 64 bits that don't depend on each other: the compiler makes vector registers of them, and loads
// bound the loop, not the chain of XORs.
constexpr unsigned lanes = 8;
constexpr unsigned step = lanes * sizeof(std::uint64_t);

std::uint64_t load(const char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

std::uint32_t from_little_endian(std::uint32_t word) {
    return std::endian::native == std::endian::little ? word : __builtin_bswap32(word);
}

/// XOR of the words of `bytes`, the last of them filled up with zeros. The order of bytes within a word is
/// put right once, at the end: XOR doesn't care.
std::uint32_t xor_of_words(const char* bytes, unsigned length) {
    std::uint64_t sums[lanes] = {};
    for (; length >= step; bytes += step, length -= step) {
        for (unsigned i = 0; i < lanes; ++i)
            sums[i] ^= load(bytes + i * sizeof(std::uint64_t));
    }
    char rest[step] = {};
    if (length > 0)
        std::memcpy(rest, bytes, length);
    std::uint64_t sum = 0;
    for (unsigned i = 0; i < lanes; ++i)
        sum ^= sums[i] ^ load(rest + i * sizeof(std::uint64_t));
    return from_little_endian(static_cast<std::uint32_t>(sum) ^ static_cast<std::uint32_t>(sum >> word_bits));
}

} // namespace

checksum::~checksum() = default;

void checksum::reset() {
    value = 0;
    shift = 0;
    enabled = true;
}

void checksum::update(const char* bytes, unsigned length) {
    if (!enabled || length == 0)
        return;
    // A run that begins inside a word is that many bytes late in each of its words.
    value ^= std::rotl(xor_of_words(bytes, length), static_cast<int>(shift));
    shift = (shift + byte_bits * (length % sizeof value)) % word_bits;
}

void checksum::update(char byte) {
    if (!enabled)
        return;
    value ^= std::uint32_t{static_cast<unsigned char>(byte)} << shift;
    shift = (shift + byte_bits) % word_bits;
}

} // namespace format::cab

#include "formats/cab/cab_checksum.h"

#include "harbor6/groundwork/endian.h"

#include <bit>
#include <cstring>

namespace format::cab {

namespace {

constexpr std::uint32_t byte_bits = 8;
constexpr std::uint32_t word_bits = 32;

// Sums of 64 bits that don't depend on each other: the compiler puts them into vector registers, and the loop
// is bound by loads, not by a chain of XORs.
constexpr unsigned lanes = 8;
constexpr unsigned step = lanes * sizeof(std::uint64_t);

/// The XOR of the little-endian words of `bytes`, the last one padded with zeros.
std::uint32_t xor_of_words(const char* bytes, unsigned length) {
    std::uint64_t sums[lanes] = {};
    for (; length >= step; bytes += step, length -= step) {
        for (unsigned i = 0; i < lanes; ++i)
            sums[i] ^= endian::load_le64(bytes + i * sizeof(std::uint64_t));
    }
    char rest[step] = {};
    if (length > 0)
        std::memcpy(rest, bytes, length);
    std::uint64_t sum = 0;
    for (unsigned i = 0; i < lanes; ++i)
        sum ^= sums[i] ^ endian::load_le64(rest + i * sizeof(std::uint64_t));
    return static_cast<std::uint32_t>(sum) ^ static_cast<std::uint32_t>(sum >> word_bits);
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
    // A run that begins inside a word is shifted by that many bits in each of its words.
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

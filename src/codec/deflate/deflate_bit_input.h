#pragma once

#include "harbor6/concurrency/buffered_input.h"
#include "harbor6/stream/nio.h"

#include <array>
#include <cstdint>

namespace deflate {

/// Each byte with its bits in the opposite order.
inline constexpr auto reversed_byte = [] {
    std::array<std::uint8_t, 256> table{};
    for (unsigned i = 1; i < 256; ++i)
        table[i] = static_cast<std::uint8_t>(table[i / 2] / 2 | (i % 2) << 7);
    return table;
}();

/// The same for the 32 bits of a word.
constexpr std::uint32_t reversed_word(std::uint32_t word) {
    return std::uint32_t{reversed_byte[word & 0xFF]} << 24 |
           std::uint32_t{reversed_byte[word >> 8 & 0xFF]} << 16 |
           std::uint32_t{reversed_byte[word >> 16 & 0xFF]} << 8 | reversed_byte[word >> 24];
}

/// Reads the bits of a Deflate stream from a read-ahead, which it doesn't own and which must outlive it.
/// Fields are stored lowest bit first and codes highest bit first; two buffers with the same bytes serve
/// both, so that no code has to be reversed. Past the end of the input it delivers bytes of ones and counts
/// them; it raises only what the source raises. For one thread at a time.
class bit_input final : public nio::filter_input {
public:
    explicit bit_input(nio::buffered_input& source);
    ~bit_input() override;

    /// Empties the buffers, wherever the source is.
    void start() override;
    /// Drops the bits up to a byte boundary.
    void finish() override;
    /// The source's position less the whole bytes that are buffered here.
    std::uint64_t tell() const override;
    /// Always refused: returns false.
    bool seek(std::uint64_t value) override;

    /// Reads byte by byte until at least 25 bits are buffered.
    void fill();
    /// Consumes the next `count` bits, at most 25, and returns them as a number.
    std::uint32_t field(unsigned count);
    /// Returns the next 15 bits as a left-justified code, without consuming them; requires fill().
    std::uint32_t code() const { return reversed_buffer >> (bit_count - 15) & 0x7FFF; }
    /// Drops `count` bits, no more than are buffered.
    void consume(unsigned count);

    /// The number of whole bytes of the input that are buffered; bytes past its end don't count.
    unsigned buffered_bytes() const;

    /// Continues behind a loop that has read on in a wider word, whose low `count` bits are still unused.
    /// Keeps as many of them as fill() would have fetched, and returns how many whole bytes the caller must
    /// return to the read-ahead.
    unsigned resume(std::uint64_t word, unsigned count);

    std::uint32_t bit_buffer = 0;      ///< the next bits, lowest first
    std::uint32_t reversed_buffer = 0; ///< the same bytes with their bits reversed, newest byte lowest
    std::int32_t bit_count = 0;        ///< valid bits in both
    std::int32_t end_count = 0;        ///< bytes of ones delivered past the end of the input

private:
    nio::buffered_input& bytes;
};

} // namespace deflate

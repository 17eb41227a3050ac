#pragma once

#include "harbor6/concurrency/buffered_input.h"
#include "harbor6/stream/nio.h"

namespace deflate {

/// Reads the bits of a Deflate stream out of a read-ahead, which it doesn't own. Fields come lowest bit first
/// and codes highest bit first; two buffers of the same bytes serve both, so that no code has to be reversed.
/// Past the end of the input it delivers ones and counts them.
class bit_input final : public nio::filter_input {
public:
    explicit bit_input(nio::buffered_input& source);
    ~bit_input() override;

    void start() override;
    /// Drops the bits up to a byte boundary.
    void finish() override;
    /// The source's position less the whole bytes that wait here.
    std::uint64_t tell() const override;
    bool seek(std::uint64_t value) override;

    /// Sees to it that at least 25 bits are there, reading byte by byte.
    void fill();
    /// The next `count` bits as a number, at most 25.
    std::uint32_t field(unsigned count);
    /// The next 15 bits as a left-justified code; fill() must have been called.
    std::uint32_t code() const { return reversed_buffer >> (bit_count - 15) & 0x7FFF; }
    void consume(unsigned count);

    /// How many whole bytes of the input wait here; the ones invented past its end don't count.
    unsigned waiting_bytes() const;

    /// For a loop that read on in a wider word and stands at its low `count` bits now. Keeps as many as
    /// fill() would have fetched, and returns the number of whole bytes that go back to the read-ahead.
    unsigned resume(std::uint64_t word, unsigned count);

    std::uint32_t bit_buffer = 0;      ///< the next bits, lowest first
    std::uint32_t reversed_buffer = 0; ///< the same bytes with their bits reversed, newest byte lowest
    std::int32_t bit_count = 0;        ///< valid bits in both
    std::int32_t end_count = 0;        ///< reads that found the end of the input

private:
    nio::buffered_input& bytes;
};

} // namespace deflate

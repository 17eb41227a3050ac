#pragma once

#include "codec/deflate/deflate_bit_input.h"
#include "harbor6/concurrency/buffered_input.h"
#include "harbor6/groundwork/endian.h"

#include <cstdint>

namespace deflate {

/// Continues reading at the position of a bit_input, in a word of 64 bits that is filled directly from the
/// read-ahead. It is a local of one loop, which calls give_back() at its end; until then neither stream may
/// be used otherwise. Neither is owned. At construction nothing may have been read past the end of the input.
class wide_reader {
public:
    /// Bits that a refill guarantees.
    static constexpr unsigned refilled = 56;
    /// Bytes that a refill reads; it consumes no more.
    static constexpr unsigned reach = sizeof(std::uint64_t);

    wide_reader(nio::buffered_input& input, bit_input& bits)
        : source(input), narrow(bits), begin(input.ahead().data()), end(begin + input.ahead().size()),
          in(begin), word(bits.bit_buffer), count(static_cast<unsigned>(bits.bit_count)) {}

    /// Whether at least `bytes` bytes of the read-ahead are left.
    bool has(unsigned bytes) const { return static_cast<std::size_t>(end - in) >= bytes; }

    /// Fills the word; `reach` bytes must be left. Of the loaded bytes only whole ones that fit are consumed;
    /// the bits above `count` are loaded again by the next refill.
    void refill() {
        word |= endian::load_le64(in) << count;
        in += (63 - count) >> 3;
        count |= refilled;
    }

    /// The next bits, lowest first: as many as the last refill guaranteed, less those consumed since.
    std::uint64_t bits() const { return word; }
    std::uint64_t bits(unsigned number) const { return word & ((std::uint64_t{1} << number) - 1); }
    void consume(unsigned number) {
        word >>= number & 63;
        count -= number;
    }

    /// A position of the reader, for restore().
    struct position {
        const unsigned char* in;
        std::uint64_t word;
        unsigned count;
    };
    position save() const { return {in, word, count}; }
    void restore(const position& saved) {
        in = saved.in;
        word = saved.word;
        count = saved.count;
    }

    /// Leaves both streams as if everything consumed so far had been read through the bit_input.
    void give_back() { source.pass(static_cast<std::size_t>(in - begin) - narrow.resume(word, count)); }

private:
    nio::buffered_input& source;
    bit_input& narrow;
    const unsigned char* begin;
    const unsigned char* end;
    const unsigned char* in;
    std::uint64_t word;
    unsigned count;
};

} // namespace deflate

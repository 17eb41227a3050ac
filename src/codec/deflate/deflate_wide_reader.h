#pragma once

#include "codec/deflate/deflate_bit_input.h"
#include "harbor6/concurrency/buffered_input.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace deflate {

/// Reads on where a bit_input stands, through a word of 64 bits that is filled straight from the read-ahead.
/// A local of one loop, which calls give_back() at its end; until then nobody else may touch either stream.
/// On entry nothing may have been read past the end of the input.
class wide_reader {
public:
    /// Bits that a refill leaves at least.
    static constexpr unsigned refilled = 56;
    /// Bytes that a refill looks at, and takes at most.
    static constexpr unsigned reach = sizeof(std::uint64_t);

    wide_reader(nio::buffered_input& input, bit_input& bits)
        : source(input), narrow(bits), begin(input.ahead().data()), end(begin + input.ahead().size()),
          in(begin), word(bits.bit_buffer), count(static_cast<unsigned>(bits.bit_count)) {}

    /// Whether at least `bytes` are ahead.
    bool has(unsigned bytes) const { return static_cast<std::size_t>(end - in) >= bytes; }

    /// Of the bytes loaded only whole ones that fit below bit 64 are taken; what lies above `count` is what
    /// the next refill puts there again.
    void refill() {
        word |= load() << count;
        in += (63 - count) >> 3;
        count |= refilled;
    }

    /// The next bits, lowest first; at least those that the last refill left, less what was consumed.
    std::uint64_t bits() const { return word; }
    std::uint64_t bits(unsigned number) const { return word & ((std::uint64_t{1} << number) - 1); }
    void consume(unsigned number) {
        word >>= number & 63;
        count -= number;
    }

    /// Where the reader stands, to go back to.
    struct place {
        const unsigned char* in;
        std::uint64_t word;
        unsigned count;
    };
    place here() const { return {in, word, count}; }
    void go_back(const place& there) {
        in = there.in;
        word = there.word;
        count = there.count;
    }

    /// Leaves the streams as if everything up to here had been read through the bit_input.
    void give_back() { source.pass(static_cast<std::size_t>(in - begin) - narrow.resume(word, count)); }

private:
    std::uint64_t load() const {
        std::uint64_t value = 0;
        if constexpr (std::endian::native == std::endian::little)
            std::memcpy(&value, in, sizeof value);
        else
            for (unsigned i = 0; i < sizeof value; ++i)
                value |= std::uint64_t{in[i]} << 8 * i;
        return value;
    }

    nio::buffered_input& source;
    bit_input& narrow;
    const unsigned char* begin;
    const unsigned char* end;
    const unsigned char* in;
    std::uint64_t word;
    unsigned count;
};

} // namespace deflate

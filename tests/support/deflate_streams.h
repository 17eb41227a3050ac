#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// Deflate streams for tests, made bit by bit, and the results of decoding them.
namespace deflate_streams {

/// Writes a Deflate stream field by field.
class bit_writer {
public:
    /// The low `count` bits of `value`, lowest first.
    bit_writer& field(std::uint32_t value, unsigned count);
    bit_writer& fields(std::initializer_list<std::pair<std::uint32_t, unsigned>> all) {
        for (const auto& [value, count] : all)
            field(value, count);
        return *this;
    }
    /// A code of `count` bits, highest first.
    bit_writer& code(std::uint32_t value, unsigned count);
    /// A literal, length or distance symbol of the fixed codes.
    bit_writer& fixed(unsigned symbol);
    bit_writer& fixed_distance(unsigned symbol) { return code(symbol, 5); }
    /// Zeros up to a byte boundary.
    bit_writer& align() { return used = 8, *this; }
    /// Appends whole bytes; the writer must be at a byte boundary.
    bit_writer& raw(std::string_view more) { return bytes += more, *this; }

    std::string bytes;

private:
    unsigned used = 8; ///< bits of the last byte
};

/// The result of one or more runs of a decoder.
struct outcome {
    std::string bytes;
    std::string message;    ///< of the failure, empty if there was none
    std::uint64_t position; ///< of the source
    unsigned writes;

    bool operator==(const outcome&) const = default;
};

struct settings {
    int extent = 15;
    unsigned piece = ~0u;  ///< the most that one read of the source returns
    bool portable = false; ///< without optional instructions of the processor
    unsigned runs = 1;     ///< streams to decode, up to the first failure
};

outcome decode(std::string_view source, bool exact_only, const settings& how = {});

} // namespace deflate_streams

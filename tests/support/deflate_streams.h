#pragma once

#include "harbor6/stream/nio.h"

#include <algorithm>
#include <cstdint>
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

/// A seekable input over bytes that it doesn't own. A read returns at most `piece` bytes.
class memory_input : public nio::input {
public:
    explicit memory_input(std::string_view source, unsigned most = ~0u) : bytes(source), piece(most) {}

    unsigned read(char* buffer, unsigned length) override {
        const auto came = bytes.copy(buffer, std::min(length, piece), next);
        next += came;
        return static_cast<unsigned>(came);
    }
    std::uint64_t tell() const override { return next; }
    bool seek(std::uint64_t value) override { return value <= bytes.size() && (next = value, true); }

private:
    std::string_view bytes;
    unsigned piece;
    std::uint64_t next = 0;
};

class memory_output : public nio::output {
public:
    void write(const char* buffer, unsigned length) override { bytes.append(buffer, length), ++writes; }
    void finish() override { ++finished; }

    std::string bytes;
    unsigned writes = 0;
    unsigned finished = 0;
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

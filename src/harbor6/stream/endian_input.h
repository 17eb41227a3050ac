#pragma once

#include "harbor6/stream/filters.h"

namespace stream {

/// Reads integers of a fixed byte order through the wrapped stream's public operations, so that a filter
/// there sees every byte. It doesn't own the stream and buffers nothing: it can be made on the stack to read
/// one record. One thread at a time.
class HARBOR6_API endian_input : public direct_input {
public:
    explicit endian_input(input& source);
    ~endian_input() override;

    /// The next byte as 0 to 255, -1 at the end.
    virtual int read8();
    /// The next integer. These raise stream::exception "unexpected end of stream", and have consumed the
    /// rest, if the stream ends before the integer is complete.
    virtual std::uint16_t read16() = 0;
    /// In the low 24 bits.
    virtual std::uint32_t read24() = 0;
    virtual std::uint32_t read32() = 0;
    virtual std::uint64_t read64() = 0;

protected:
    /// Whether the machine's byte order is not little-endian.
    const bool foreign_order;
};

/// Little-endian integers: the first byte is the least significant, on every machine.
class HARBOR6_API little_endian_input : public endian_input {
public:
    explicit little_endian_input(input& source);
    ~little_endian_input() override;

    std::uint16_t read16() override;
    std::uint32_t read24() override;
    std::uint32_t read32() override;
    std::uint64_t read64() override;
};

} // namespace stream

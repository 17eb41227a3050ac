#pragma once

#include "harbor6/stream/filters.h"

namespace stream {

/// Integers of a fixed byte order, read through the wrapped stream's public operations, so that a filter
/// below sees every byte. Meant to live on the stack for as long as one record is read.
class HARBOR6_API endian_input : public direct_input {
public:
    explicit endian_input(input& source);
    ~endian_input() override;

    /// The next byte as 0 to 255, -1 at the end.
    virtual int read8();
    /// These raise stream::exception "unexpected end of stream" where the stream ends inside the integer.
    virtual std::uint16_t read16() = 0;
    /// In the low 24 bits.
    virtual std::uint32_t read24() = 0;
    virtual std::uint32_t read32() = 0;
    virtual std::uint64_t read64() = 0;

protected:
    /// Whether the machine's byte order is not little-endian.
    const bool foreign_order;
};

/// The first byte is the least significant, whatever the machine.
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

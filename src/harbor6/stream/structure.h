#pragma once

#include "harbor6/groundwork/export.h"

#include <cstdint>

namespace stream {
class input;
class output;
} // namespace stream

namespace un {

/// A record that knows how to read and write itself.
class HARBOR6_API structure {
public:
    structure() = default;
    structure(const structure&) = default;
    structure& operator=(const structure&) = default;
    virtual ~structure();

    virtual bool is_valid() const;
    /// Reads the record where `input` stands and returns the bytes consumed. `verify` asks for all the
    /// record's tests, with exceptions; without it the record is only parsed.
    virtual std::uint32_t read(stream::input& input, bool verify);
    /// Returns the bytes written.
    virtual std::uint32_t write(stream::output& output) const;
    /// Bytes that write gives.
    virtual std::uint32_t size() const;
};

} // namespace un

namespace format {

/// A record of an archive; its size is found by writing it into nothing.
class HARBOR6_API header : public un::structure {
public:
    ~header() override;

    std::uint32_t size() const override;
};

} // namespace format

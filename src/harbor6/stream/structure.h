#pragma once

#include "harbor6/groundwork/export.h"

#include <cstdint>

namespace stream {
class input;
class output;
} // namespace stream

namespace un {

/// An on-disk record that can read, check and write itself. It keeps no stream after a call. One thread at a
/// time.
class HARBOR6_API structure {
public:
    structure() = default;
    structure(const structure&) = default;
    structure& operator=(const structure&) = default;
    virtual ~structure();

    /// Whether the record in memory is sound; true by default.
    virtual bool is_valid() const;
    /// Reads the record at the position of `input` and returns the number of bytes consumed. With `verify`
    /// all tests of the record are made and failures raise an exception; without, it is only parsed. What the
    /// input raises passes through. Reads nothing by default and returns 0.
    virtual std::uint32_t read(stream::input& input, bool verify);
    /// Writes the record and returns the number of bytes; nothing and 0 by default.
    virtual std::uint32_t write(stream::output& output) const;
    /// The number of bytes that write() writes; 0 by default.
    virtual std::uint32_t size() const;
};

} // namespace un

namespace format {

/// A record of an archive.
class HARBOR6_API header : public un::structure {
public:
    ~header() override;

    /// Found by writing the record into a stream::infinite_output.
    std::uint32_t size() const override;
};

} // namespace format

#pragma once

#include "stream/structure.h"

#include <memory>

namespace format::cab {

class reserved_header;

/// One data block. A block is tested before a byte of it is expanded: read takes all of it and then hands the
/// payload back to the stream, so the stream must take back up to 65535 bytes. One object serves all blocks
/// of a folder and keeps its buffer between them.
class data_header : public format::header {
public:
    ~data_header() override;

    /// Whether the stored checksum equals the computed one.
    bool is_valid() const override;
    /// Leaves `input` at the payload's first byte and returns the bytes in front of it. The caller takes
    /// exactly `compressed_size` bytes before the next read. Raises format::crc_exception "CRC mismatch, data
    /// is invalid", and with `verify` format::exception "unexpected end of input stream" for reserve bytes
    /// cut short; a stream that ends inside an integer raises stream::exception. A payload cut short is
    /// filled up with zeros; only a checksum tells.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t compressed_size = 0;   ///< bytes of payload
    std::uint64_t uncompressed_size = 0; ///< bytes that it expands to
    const reserved_header* reserve =
        nullptr;                       ///< the cabinet's reserve sizes, null or set from outside, not owned
    std::uint32_t stored_checksum = 0; ///< 0 means none
    std::uint32_t computed_checksum = 0xFFFFFFFF;
    std::unique_ptr<char[]> payload; ///< valid until the next read

private:
    void read_payload(stream::input& counted, unsigned length);
    void read_tail(stream::input& input, unsigned length);

    std::uint64_t capacity = 0; ///< of `payload`
};

} // namespace format::cab

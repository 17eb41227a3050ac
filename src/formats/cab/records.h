#pragma once

#include "harbor6/groundwork/time.h"
#include "harbor6/shell/structures.h"
#include "harbor6/stream/structure.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace stream {
class input;
}

namespace format::cab {

/// The bytes up to a zero byte, which is taken too, or up to the end of the stream, which is no failure. A
/// field may be of any length.
std::string read_text(stream::input& input);

/// A text field that names a file, in UTF-8.
std::string read_name(stream::input& input);

/// A field that not every header has.
template<class T>
struct optional_field {
    T value{};
    bool present = false; ///< whether it was read
};

/// How many bytes a cabinet's writer kept for itself in each kind of record.
class reserved_header : public format::header {
public:
    ~reserved_header() override;

    /// Without tests; at the end of the stream a missing byte reads as 255.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t header_size = 0; ///< behind the archive header
    std::uint64_t folder_size = 0; ///< in each folder record
    std::uint64_t data_size = 0;   ///< in each data block
};

/// The record at the start of a cabinet, with the reserve area and the names behind it. Reading it again into
/// the same object sets all fixed fields anew; names stay from the last header that had them.
class archive_header : public format::header {
public:
    ~archive_header() override;

    /// The signature fits, and so does the checksum if there is one.
    bool is_valid() const override;
    /// With `verify` a header that can't be used raises format::exception: "bad header artifact",
    /// "unsupported cabinet version", "invalid cabinet index", "archive header CRC error". Without it nothing
    /// is looked at. A stream that ends inside an integer raises stream::exception; names and reserve bytes
    /// may end with it.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t cabinet_size = 0; ///< as the writer states it, not tested
    std::uint64_t files_offset = 0; ///< of the first file record; not used
    std::uint32_t folder_count = 0;
    std::uint32_t file_count = 0;
    bool has_previous = false; ///< continues an earlier cabinet
    bool has_next = false;     ///< continues in a later cabinet
    bool has_reserve = false;
    std::uint16_t set_id = 0;
    std::uint16_t cabinet_index = 0xFFFF;
    std::uint32_t reserved_word_1 = 0;
    std::uint32_t reserved_word_2 = 0;
    optional_field<std::string> previous_cabinet; ///< UTF-8
    optional_field<std::string> previous_disk;    ///< bytes as they stand in the cabinet
    optional_field<std::string> next_cabinet;     ///< UTF-8
    optional_field<std::string> next_disk;        ///< bytes as they stand in the cabinet
    optional_field<reserved_header> reserve;      ///< all sizes are 0 if it isn't present
    std::uint16_t flags = 0;
    std::uint32_t stored_checksum = 0; ///< 0 means none
    std::uint32_t computed_checksum = 0xFFFFFFFF;
    std::array<char, 4> signature{};
    std::uint16_t version = 0;

private:
    void read_fixed_fields(stream::input& input, bool verify);
};

class reserved_header;

/// One compressed stream of a cabinet. The records follow the archive header directly.
class folder_header : public format::header {
public:
    ~folder_header() override;

    /// With `verify`, reserve bytes cut short raise format::exception "unexpected end of input stream". A
    /// stream that ends inside an integer raises stream::exception.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t data_offset = 0; ///< of the first data block in the cabinet; not used
    std::uint32_t block_count = 0;
    std::uint16_t compression = 0; ///< see format::cab::compression
    /// The cabinet's reserve sizes; null, or set by whoever made the record, and never owned.
    const reserved_header* reserve = nullptr;
};

/// A piece of a cabinet folder's stream. The records follow the last folder record.
class file_header : public format::header {
public:
    ~file_header() override;

    /// No field is tested: the caller knows which folder indexes there are. The name may end with the stream;
    /// a stream that ends before it raises stream::exception.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t size = 0;          ///< uncompressed
    std::uint64_t folder_offset = 0; ///< in the uncompressed folder; not used
    std::uint16_t folder_index = 0;
    bool continued_from_previous = false;
    bool continued_to_next = false;
    bool continued_both = false;
    fs::time time;
    io::win32::attributes attributes;
    std::string name; ///< UTF-8, with '/' as the only separator
};

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

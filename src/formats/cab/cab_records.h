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

/// The records of a cabinet in the order in which a cabinet holds them. A record owns its fields and not the
/// stream; it is for one thread at a time.
///
/// `read(input, verify)` of each reads the record from the current position of `input`, sets `input.mark` to
/// that position and returns the number of bytes consumed. `verify` turns the record's own tests on; their
/// failures are format::exception with the texts given at each record. A stream that ends inside an integer
/// raises stream::exception in either case. After a failure the fields read before it are set.
namespace format::cab {

/// A field that not every header has.
template<class T>
struct optional_field {
    T value{};
    bool present = false; ///< whether it was read
};

/// How the texts of a record are read, each up to a zero byte.
struct text_rules {
    std::uint64_t longest = ~std::uint64_t{0}; ///< bytes that are kept; the rest of a longer text is dropped
    /// Whether a text that the end of the stream cuts raises stream::cut_short. Otherwise it is what was
    /// read.
    bool must_end = false;
    bool must_fit = false;  ///< whether a longer text raises format::exception, and isn't read further
    bool utf8_flag = false; ///< whether a name that its record marks as UTF-8 is that in every code page
};

/// The sizes of the reserve areas, which cabinet writers use as they like and readers skip.
class reserved_header : public format::header {
public:
    ~reserved_header() override;

    /// Makes no tests. At the end of the stream a missing size byte reads as 255.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t header_size = 0; ///< bytes behind the archive header
    std::uint64_t folder_size = 0; ///< bytes in each folder record
    std::uint64_t data_size = 0;   ///< bytes in each data block
};

/// The record at the start of a cabinet, with the reserve area and the names behind it. An object may be read
/// again: all fixed fields are overwritten, names are kept from the last header that had them.
class archive_header : public format::header {
public:
    ~archive_header() override;

    /// Whether the signature is right, and the checksum too if there is one.
    bool is_valid() const override;
    /// With `verify` a header that can't be used raises "bad header artifact", "unsupported cabinet version",
    /// "invalid cabinet index" or "archive header CRC error", the first that applies. Reserve bytes, and
    /// names unless `texts` forbids it, may end with the stream.
    std::uint32_t read(stream::input& input, bool verify) override;

    text_rules texts;               ///< to be set before read()
    std::uint64_t cabinet_size = 0; ///< as stated by the writer, who may be wrong
    std::uint64_t files_offset = 0; ///< of the first file record; for the published rules
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
    optional_field<std::string> previous_disk;    ///< not converted
    optional_field<std::string> next_cabinet;     ///< UTF-8
    optional_field<std::string> next_disk;        ///< not converted
    optional_field<reserved_header> reserve;      ///< all sizes are 0 if it is absent
    std::uint16_t flags = 0;
    std::uint32_t stored_checksum = 0; ///< 0 means none
    std::uint32_t computed_checksum = 0xFFFFFFFF;
    std::array<char, 4> signature{};
    std::uint16_t version = 0;

private:
    void read_fixed_fields(stream::input& input, bool verify);
};

/// One compressed stream of a cabinet. The records follow the archive header directly.
class folder_header : public format::header {
public:
    ~folder_header() override;

    /// With `verify`, a stream that ends inside the reserve bytes raises "unexpected end of input stream".
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t data_offset = 0; ///< of the first data block in the cabinet; for the published rules
    std::uint32_t block_count = 0;
    std::uint16_t compression = 0; ///< see format::cab::compression
    /// The cabinet's reserve sizes, not owned; to be set before read(). Null if the cabinet has none.
    const reserved_header* reserve = nullptr;
};

/// A file: a piece of a cabinet folder's stream. The records follow the last folder record.
class file_header : public format::header {
public:
    ~file_header() override;

    /// Makes no tests; the caller knows which folder indexes are valid. The name may end with the stream
    /// unless `texts` forbids it.
    std::uint32_t read(stream::input& input, bool verify) override;

    text_rules texts;                ///< to be set before read()
    std::uint64_t size = 0;          ///< bytes when expanded
    std::uint64_t folder_offset = 0; ///< in the folder's expanded stream; for the published rules
    std::uint16_t folder_index = 0;
    bool continued_from_previous = false;
    bool continued_to_next = false;
    bool continued_both = false;
    fs::time time;
    io::win32::attributes attributes;
    std::string name;            ///< UTF-8, with '/' as the only separator
    bool name_shortened = false; ///< the stored name is longer than `texts` allows, and `name` its beginning
};

/// One data block. A block is tested before a byte of it is expanded: read() reads all of it and then pushes
/// the payload back, so the stream must accept a push-back of up to 65535 bytes. One object serves all blocks
/// of a folder and reuses its buffer.
class data_header : public format::header {
public:
    ~data_header() override;

    /// Whether the stored checksum equals the computed one.
    bool is_valid() const override;
    /// Leaves `input` at the payload's first byte and returns the number of bytes before it. The caller must
    /// consume exactly `compressed_size` bytes before the next read.
    ///
    /// A wrong checksum raises format::crc_exception "CRC mismatch, data is invalid", whatever `verify` is.
    /// With `verify`, a stream that ends inside the reserve bytes raises "unexpected end of input stream". A
    /// payload that the end of the stream cuts short is padded with zeros, which only a checksum detects
    /// here; a host's stream may refuse the push-back then with stream::cut_short.
    std::uint32_t read(stream::input& input, bool verify) override;
    /// Reads the block by the published rules: the payload is consumed and stays in `payload`, and
    /// `computed_checksum` is published::checksum_of. A block that the end of the stream cuts raises
    /// stream::cut_short. Returns whether the checksum is right or absent.
    bool read_published(stream::input& input);
    /// Passes over the whole block, payload included, without testing it. Only the sizes are set.
    void skip(stream::input& input);

    std::uint64_t compressed_size = 0;   ///< bytes of payload
    std::uint64_t uncompressed_size = 0; ///< bytes that it expands to
    /// The cabinet's reserve sizes, not owned; to be set before read(). Null if the cabinet has none.
    const reserved_header* reserve = nullptr;
    std::uint32_t stored_checksum = 0; ///< 0 means none
    std::uint32_t computed_checksum = 0xFFFFFFFF;
    std::unique_ptr<char[]> payload; ///< valid until the next read

    /// How many bytes of the payload the stream held at the last read, even if that has failed.
    unsigned received_size() const { return received; }

private:
    void make_room();
    void read_words(stream::input& counted, unsigned length);
    void read_tail(stream::input& input, unsigned length);

    std::uint64_t capacity = 0; ///< of `payload`
    unsigned received = 0;
};

} // namespace format::cab

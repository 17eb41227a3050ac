#pragma once

#include "stream/structure.h"

#include <array>
#include <cstdint>
#include <string>

namespace format::cab {

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

} // namespace format::cab

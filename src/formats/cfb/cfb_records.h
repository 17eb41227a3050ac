#pragma once

#include "formats/cfb/cfb_constants.h"
#include "harbor6/stream/structure.h"

#include <array>
#include <cstdint>
#include <string>

/// The records of a compound document. A record owns its fields and is for one thread at a time.
namespace format::cfb {

/// The first 512 bytes.
class file_header : public format::header {
public:
    ~file_header() override;

    /// Whether signature, byte order, version and the sizes of sectors belong together.
    bool is_valid() const override;
    /// Raises stream::exception if the input ends before the record does; with `verify` also
    /// format::exception unless the record is valid.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t sector_size() const { return std::uint64_t{1} << sector_shift; }
    /// Numbers in one sector of a table.
    std::uint32_t numbers_per_sector() const { return static_cast<std::uint32_t>(sector_size() / 4); }
    /// Place of a sector in the file.
    std::uint64_t place_of(std::uint32_t sector) const { return (std::uint64_t{sector} + 1) << sector_shift; }

    std::uint16_t version = 0;
    std::uint16_t sector_shift = 0;
    std::uint32_t fat_sectors = 0;
    std::uint32_t first_directory_sector = end_of_chain;
    std::uint32_t mini_cutoff = 0; ///< shorter streams are in the mini stream
    std::uint32_t first_mini_fat_sector = end_of_chain;
    std::uint32_t first_difat_sector = end_of_chain;
    std::array<std::uint32_t, header_fat_numbers> fat{}; ///< sector numbers

private:
    bool sound = false;
};

/// An entry of the directory: a storage, a stream, or the root, whose stream holds the short streams.
struct directory_entry {
    explicit directory_entry(const char* bytes);

    /// The name as UTF-8, with the characters that file names can't have as "[5]", by their number. With
    /// `packed` it is that of an installer database; the mark of a table becomes "!".
    std::string text(bool packed) const;
    /// Whether the name is that of a table of an installer database.
    bool is_table() const { return !name.empty() && name.front() == table_mark; }

    std::u16string name;
    unsigned type;
    std::uint32_t left, right, child; ///< numbers of entries, or no_entry
    std::uint32_t first_sector;
    std::uint64_t size;
};

} // namespace format::cfb

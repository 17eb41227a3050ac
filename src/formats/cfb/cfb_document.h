#pragma once

#include "formats/cfb/cfb_records.h"

#include <string>
#include <vector>

namespace stream {
class input;
class output;
} // namespace stream

namespace format::cfb {

/// A stream or storage of a document.
struct item {
    static constexpr std::uint32_t at_top = ~std::uint32_t{0};

    std::string name; ///< UTF-8
    bool is_storage;
    std::uint32_t parent; ///< index of its storage among the items, or at_top
    std::uint32_t first_sector;
    std::uint64_t size;
};

/// A compound document: a file system of sectors in a file. Whatever the file holds, every sector is read for
/// one stream at most, so that all streams together are no longer than the file. The tables take about a
/// hundredth of the file's size in memory; streams are copied piece by piece.
///
/// It doesn't own the input, which must seek and is used by nothing else meanwhile. One thread at a time.
/// Failures of the input pass through.
class document {
public:
    /// Reads the tables and the directory. Raises format::exception if the header can't be used or the input
    /// can't seek. Damage further on is noted, and what it leaves is read.
    explicit document(stream::input& storage);

    /// In the order of the directory.
    const std::vector<item>& items() const { return listed; }
    /// What is wrong with the tables and the directory, so that items may be missing; empty if nothing is.
    const std::string& damage() const { return noted; }
    /// Writes the bytes of a stream to `target`, once. Raises format::exception if not all of them can be
    /// read.
    void copy(const item& stream, stream::output& target);

private:
    using numbers = std::vector<std::uint32_t>;

    /// Sectors of one kind, each of which belongs to one chain at most.
    struct sector_space {
        explicit sector_space(std::uint64_t count) : taken(count) {}

        /// Calls `visit` with up to `most` sectors of a chain; returns how many there were. Raises
        /// format::exception where the chain is damaged.
        template<class Visit>
        std::uint64_t follow(std::uint32_t first, std::uint64_t most, Visit visit);

        numbers next;            ///< by sector; shorter than `taken` if parts of the table are missing
        std::vector<bool> taken; ///< by sector
    };

    template<class Act>
    void attempt(Act act);
    void read_at(std::uint64_t place, char* buffer, std::uint64_t length);
    void append_numbers(std::uint32_t sector, numbers& to, std::uint64_t most);
    void load_fat();
    std::vector<directory_entry> load_directory();
    void load_mini_stream(const directory_entry& root);
    void list_items(const std::vector<directory_entry>& entries);

    stream::input& input;
    file_header header;
    sector_space sectors;
    sector_space mini_sectors;
    numbers mini_stream; ///< its sectors
    std::vector<item> listed;
    std::string noted;
};

} // namespace format::cfb

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
    std::uint64_t sectors = 0;    ///< of its chain, as far as they belong to it alone
    const char* damage = nullptr; ///< why its chain has no more; null if it has all that the size needs
};

/// A compound document: a file system of sectors in a file. Whatever the file holds, every sector belongs to
/// one stream at most, so that all streams together are no longer than the file: where chains share sectors,
/// those streams get them whose chains are as long as their sizes need. The tables take about a fiftieth of
/// the file's size in memory; streams are copied piece by piece.
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
    /// Writes the bytes of a stream to `target`. Raises format::exception if not all of them can be read.
    void copy(const item& stream, stream::output& target);

private:
    using numbers = std::vector<std::uint32_t>;

    /// Sectors of one kind, each of which belongs to one chain at most.
    struct sector_space {
        explicit sector_space(std::uint64_t count) : taken(count) {}

        /// The number of the sector behind this one in its chain.
        std::uint32_t behind(std::uint32_t sector) const;
        /// Takes up to `most` sectors of a chain, calls `visit` with each, and adds 1 to `count`. Returns
        /// what is wrong with the chain, null if nothing is.
        template<class Visit>
        const char* take(std::uint32_t first, std::uint64_t most, std::uint64_t& count, Visit visit);
        /// The same; returns the number of sectors, and raises format::exception if something is wrong.
        template<class Visit>
        std::uint64_t follow(std::uint32_t first, std::uint64_t most, Visit visit);
        /// The number of sectors of the chain, endless if it has no end; `known` has those of other chains.
        std::uint64_t length(std::uint32_t first, numbers& known) const;
        static constexpr std::uint32_t endless = ~std::uint32_t{0};

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
    bool is_short(const item& stream) const { return stream.size < header.mini_cutoff; }
    void share_out_sectors(bool short_streams);

    stream::input& input;
    file_header header;
    sector_space sectors;
    sector_space mini_sectors;
    numbers mini_stream; ///< its sectors
    std::vector<item> listed;
    std::string noted;
};

} // namespace format::cfb

#include "formats/cab/cab_published_rules.h"

#include "formats/cab/cab_checksum.h"
#include "formats/cab/cab_records.h"

namespace format::cab::published {

namespace {

/// The XOR of the little-endian words of `bytes`; of fewer than four bytes at the end the last is the lowest.
std::uint32_t sum_of(std::string_view bytes) {
    const auto tail = bytes.size() % sizeof(std::uint32_t);
    const auto words = bytes.size() - tail;
    checksum sum;
    sum.update(bytes.data(), static_cast<unsigned>(words));
    std::uint32_t last = 0;
    for (const char byte : bytes.substr(words))
        last = last << 8 | static_cast<unsigned char>(byte);
    return sum.value ^ last;
}

} // namespace

std::uint32_t checksum_of(std::string_view payload, std::string_view fields) {
    return sum_of(payload) ^ sum_of(fields);
}

bool comes_from_previous(const file_header& file) {
    return file.continued_from_previous || file.continued_both;
}

bool goes_on_in_next(const file_header& file) {
    return file.continued_to_next || file.continued_both;
}

std::optional<std::size_t> folder_of(const file_header& file, const archive_header& header) {
    const std::size_t folders = header.folder_count;
    if (file.folder_index < folders)
        return file.folder_index;
    const bool from_previous = comes_from_previous(file);
    const bool to_next = goes_on_in_next(file);
    if (folders == 0 || (!from_previous && !to_next) || (from_previous && !header.has_previous) ||
        (to_next && !header.has_next) || (from_previous && to_next && folders > 1))
        return std::nullopt;
    return from_previous ? 0 : folders - 1;
}

bool is_place(std::uint64_t offset, std::uint64_t head, std::uint64_t size) {
    return offset >= head && offset <= size;
}

bool is_piece(std::uint64_t uncompressed_size, bool last_of_spanning_folder) {
    return uncompressed_size == 0 && last_of_spanning_folder;
}

} // namespace format::cab::published

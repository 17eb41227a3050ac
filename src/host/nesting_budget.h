#pragma once

#include <cstdint>

namespace host {

/// How many items and bytes the archives inside an archive may expand to, all levels together, in relation to
/// the bytes that were read for the outermost one. A few kilobytes can hold archives that double their
/// content at each level; no sound archive comes near these limits. Each copy of an archive counts. One
/// thread.
class nesting_budget {
public:
    static constexpr std::uint64_t bytes_per_byte = 2000; ///< no known format compresses one level better
    static constexpr std::uint64_t free_bytes = std::uint64_t{1} << 30;
    static constexpr std::uint64_t bytes_per_item = 8;
    static constexpr std::uint64_t free_items = 20000;

    /// No limits.
    nesting_budget() = default;
    /// The limits for an archive of which `read` bytes were read.
    explicit nesting_budget(std::uint64_t read);

    /// Whether what is left surely suffices for an archive of `size` bytes, with its items but without
    /// archives among them.
    bool covers(std::uint64_t size) const;
    /// Uses up items and their bytes. If that is more than is left, nothing is left from then on, and
    /// un::exception is raised with the limit in its text.
    void take(std::uint64_t items, std::uint64_t bytes);

private:
    std::uint64_t item_limit = ~std::uint64_t{0};
    std::uint64_t byte_limit = ~std::uint64_t{0};
    std::uint64_t items_left = item_limit;
    std::uint64_t bytes_left = byte_limit;
};

} // namespace host

#include "host/nesting_budget.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"

namespace host {

namespace {

/// Far above any size of a file, and small enough to calculate with.
constexpr std::uint64_t most_read = std::uint64_t{1} << 48;

std::uint64_t bounded(std::uint64_t read) {
    return read < most_read ? read : most_read;
}

} // namespace

nesting_budget::nesting_budget(std::uint64_t read)
    : item_limit(free_items + bounded(read) / bytes_per_item),
      byte_limit(free_bytes + bounded(read) * bytes_per_byte) {}

bool nesting_budget::covers(std::uint64_t size) const {
    return bytes_left / bytes_per_byte >= size && items_left >= size / bytes_per_item;
}

void nesting_budget::take(std::uint64_t items, std::uint64_t bytes) {
    const bool too_many = items > items_left;
    if (too_many || bytes > bytes_left) {
        items_left = bytes_left = 0;
        throw un::exception("the archives inside the archive expand to more than " +
                                un::write(too_many ? item_limit : byte_limit, 10, 1) +
                                (too_many ? " items" : " bytes") + " (--no-limits)",
                            "host::nesting_budget");
    }
    items_left -= items;
    bytes_left -= bytes;
}

} // namespace host

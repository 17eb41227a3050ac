#include "stream/nio_copy.h"

#include <algorithm>
#include <vector>

namespace nio {

namespace {

/// Reads up to `limit` bytes piece by piece, hands each piece to `take`, and stops at the first read that
/// gives nothing.
template<class Take>
std::uint64_t drain(input& source, std::uint64_t limit, unsigned chunk, Take take) {
    std::vector<char> piece(static_cast<std::size_t>(std::min<std::uint64_t>(limit, std::max(chunk, 1u))));
    std::uint64_t total = 0;
    while (total < limit) {
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(limit - total, piece.size()));
        const auto came = source.read(piece.data(), wanted);
        if (came == 0)
            break;
        take(piece.data(), came);
        total += came;
    }
    return total;
}

} // namespace

std::uint64_t copy(input& source, output& target, std::uint64_t limit, unsigned chunk) {
    return drain(source, limit, chunk,
                 [&](const char* bytes, unsigned length) { target.write(bytes, length); });
}

std::uint64_t skip(input& source, std::uint64_t count, unsigned chunk) {
    return drain(source, count, chunk, [](const char*, unsigned) {});
}

} // namespace nio

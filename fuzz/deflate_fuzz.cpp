// The two loops of the Deflate decoder against each other, and both against zlib. The first byte chooses the
// form and how much the source delivers per read; the rest is one stream after the other.

#include "support/deflate_streams.h"
#include "zlib_answer.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    constexpr int extents[] = {15, 15, 15, 10, 16, 0, 17, 25};
    constexpr unsigned pieces[] = {~0u, 300, 40, 1};
    deflate_streams::settings how;
    how.extent = extents[data[0] & 7];
    how.piece = pieces[data[0] >> 3 & 3];
    how.runs = 1 + (data[0] >> 5);
    const std::string_view stream(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto exact = deflate_streams::decode(stream, true, how);
    require(deflate_streams::decode(stream, false, how) == exact);

    if (how.extent == 15 && how.runs == 1) {
        // Every stream that zlib accepts is accepted; zlib is stricter about unused codes and about the end.
        const zlib_answer theirs(stream);
        if (theirs.sound) {
            require(exact.message.empty());
            require(exact.bytes == theirs.bytes);
            require(exact.position == theirs.consumed);
        }
    }
    return 0;
}

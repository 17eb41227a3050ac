#pragma once

#include <memory>
#include <string_view>

namespace rivals {

/// zlib's inflate as a plain loop would use it for the blocks of a folder: one state, reset for each block.
class zlib_inflate {
public:
    zlib_inflate();
    ~zlib_inflate();

    /// Decodes one raw stream to `out`, with `history` ahead of it, and returns the bytes made. Raises
    /// std::runtime_error for a stream that isn't sound.
    std::size_t decode(std::string_view stream, std::string_view history, char* out, std::size_t room);

private:
    struct state;
    std::unique_ptr<state> inner;
};

} // namespace rivals

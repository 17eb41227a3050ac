#pragma once

#include <string>
#include <string_view>

/// zlib's own answer: whether `stream` begins with a sound Deflate stream, what it holds, and its size. Apart
/// from what asks, since zlib's function deflate and our namespace can't meet in one file.
struct zlib_answer {
    explicit zlib_answer(std::string_view stream);

    bool sound;
    std::string bytes;
    std::size_t consumed;
};

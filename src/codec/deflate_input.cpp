#include "codec/deflate_input.h"

namespace deflate {

namespace {

constexpr unsigned pipe_size = 65536; ///< more than an MSZIP block, so that its writer never waits

} // namespace

input::input(nio::input& source, unsigned extent, bool rewind) : transform_input(source, pipe_size) {
    decompressor.extent = static_cast<std::int32_t>(extent);
    decompressor.rewind = rewind;
}

input::~input() = default;

} // namespace deflate

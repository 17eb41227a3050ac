#include "codec/deflate/flate_adaptor.h"

namespace deflate {

namespace {

/// More than an MSZIP block, so that a worker never waits for the reader.
constexpr unsigned pipe_size = 65536;

} // namespace

input::input(nio::input& source, unsigned extent, bool rewind) : transform_input(source, pipe_size) {
    decompressor.extent = static_cast<std::int32_t>(extent);
    decompressor.rewind = rewind;
}

input::~input() = default;

} // namespace deflate

namespace algorithm::flate_adaptor {

decompressor::decompressor(stream::input& source, unsigned extent, bool rewind)
    : adapter_2_input(source, extent, rewind) {}

decompressor::~decompressor() = default;

} // namespace algorithm::flate_adaptor

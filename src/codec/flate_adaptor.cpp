#include "codec/flate_adaptor.h"

namespace algorithm::flate_adaptor {

decompressor::decompressor(stream::input& source, unsigned extent, bool rewind)
    : adapter_2_input(source, extent, rewind) {}

decompressor::~decompressor() = default;

} // namespace algorithm::flate_adaptor

#pragma once

#include "codec/deflate_decompressor.h"
#include "concurrency/transform_input.h"

namespace deflate {

/// The bytes of Deflate streams, one for each start() and finish(), decoded on a worker. The history lasts
/// from stream to stream.
class input : public nio::transform_input<decompressor> {
public:
    /// `extent` is the base-2 logarithm of the window; `rewind` leaves the source behind the stream's end.
    input(nio::input& source, unsigned extent, bool rewind);
    ~input() override;
};

} // namespace deflate

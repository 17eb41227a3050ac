#pragma once

#include "codec/deflate/deflate_decompressor.h"
#include "harbor6/concurrency/transform_input.h"
#include "harbor6/stream/filters.h"

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

namespace algorithm::flate_adaptor {

/// Deflate streams as a stream::input. For each one: position the source on it, then start(), copy_to(output)
/// and finish(). start() hands the source to a worker thread, finish() takes it back and raises what went
/// wrong there; what copy_to wrote before that is then short. One object serves all blocks of a folder and
/// keeps their history. The source must outlive it.
class decompressor : public stream::adapter_2_input<deflate::input> {
public:
    /// A cabinet passes 15 and true.
    decompressor(stream::input& source, unsigned extent, bool rewind);
    ~decompressor() override;

    using stream::input::read;
};

} // namespace algorithm::flate_adaptor

#pragma once

#include "codec/deflate/deflate_decompressor.h"
#include "harbor6/concurrency/transform_input.h"
#include "harbor6/stream/filters.h"

namespace deflate {

/// The decoded bytes of Deflate streams, one stream for each start() and finish(). The history is kept from
/// stream to stream. The source isn't owned and must outlive the object; between start() and finish() it
/// belongs to the decoder, which runs on a worker thread unless copy_to() takes the whole stream.
class input : public nio::transform_input<decompressor> {
public:
    /// `extent` is the base-2 logarithm of the window size; with `rewind` the source is left on the byte
    /// behind each stream.
    input(nio::input& source, unsigned extent, bool rewind);
    ~input() override;
};

} // namespace deflate

namespace algorithm::flate_adaptor {

/// Deflate streams as a stream::input. For each stream: position the source on it, then call start(),
/// copy_to(output) and finish(). start() hands the source to the decoder; finish() takes it back and raises
/// the decoder's failure, if any, in which case copy_to() has written a part only. The end of the data is a
/// short read. One object serves all blocks of a folder and keeps their history. The source isn't owned and
/// must outlive it. All calls are made on the owner's thread, which also does the writing, and the decoding
/// unless bytes are read before copy_to().
class decompressor : public stream::adapter_2_input<deflate::input> {
public:
    /// A cabinet passes 15 and true.
    decompressor(stream::input& source, unsigned extent, bool rewind);
    ~decompressor() override;

    using stream::input::read;
};

} // namespace algorithm::flate_adaptor

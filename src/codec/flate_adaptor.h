#pragma once

#include "codec/deflate_input.h"
#include "stream/adapter_input.h"

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

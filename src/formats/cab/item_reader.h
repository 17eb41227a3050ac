#pragma once

#include "harbor6/stream/transform.h"

namespace format {

/// Whatever expands one item of an archive.
class item_reader : public stream::transform {
public:
    ~item_reader() override;
};

} // namespace format

namespace format::cab {

class data_header;
class folder_header;

/// Expands one cabinet folder into one stream of bytes; it knows nothing of files. Decoders live for one call
/// of process, so history runs through all blocks of a folder and starts afresh in the next. `output` is
/// written on the calling thread, and neither finished nor closed.
class item_reader : public format::item_reader {
public:
    /// `expanded` isn't owned and must outlive the reader.
    explicit item_reader(const folder_header* expanded = nullptr);
    ~item_reader() override;

    using stream::transform::process;

    /// From `input`, which stands on the folder's first data block, runs as many blocks as the record says,
    /// and returns the bytes produced. A method that can't be read is refused with format::exception before a
    /// byte is read; what a block's record, a decoder or `output` raises passes through.
    std::uint64_t process(stream::input& input, stream::output& output) override;

    const folder_header* folder; ///< the folder to expand

private:
    std::uint64_t copy_stored(stream::input& input, stream::output& output, data_header& block);
    std::uint64_t expand_deflate(stream::input& input, stream::output& output, data_header& block);
    std::uint64_t expand_lzx(stream::input& input, stream::output& output, data_header& block);
};

} // namespace format::cab

#pragma once

#include "harbor6/stream/transform.h"

#include <memory>

namespace algorithm::lzx {
class decompressor;
}

namespace format {

/// Base of the classes that expand one item of an archive.
class item_reader : public stream::transform {
public:
    ~item_reader() override;
};

} // namespace format

namespace format::cab {

class block_source;
class folder_header;

/// Expands one cabinet folder into one stream of bytes; files are cut from that stream elsewhere. History
/// continues through all blocks of a folder and is empty at the start of the next; one reader for the folders
/// of a cabinet spares the making of decoders. It owns neither the record nor the streams.
class item_reader : public format::item_reader {
public:
    /// `expanded` must outlive the reader and be set before process().
    explicit item_reader(const folder_header* expanded = nullptr);
    ~item_reader() override;

    using stream::transform::process;

    /// Expands `folder->block_count` data blocks from `input`, which is positioned on the first, and returns
    /// the number of bytes produced. `output` is written on the calling thread, and neither finished nor
    /// closed.
    ///
    /// A method that isn't supported raises format::exception before a byte is read, and so does a block that
    /// doesn't expand to its size; failures of the records, the decoders and the streams pass through. The
    /// bytes produced before a failure have been written. That includes the bytes of a stored block without a
    /// checksum that the end of the input cut short.
    std::uint64_t process(stream::input& input, stream::output& output) override;

    /// The same for the blocks that `blocks` gives.
    std::uint64_t expand(block_source& blocks, stream::output& output);

    const folder_header* folder; ///< the folder to expand
    /// LZX data are decoded as algorithm::lzx::decompressor::use_published_rules says.
    /// Never cleared once it was set.
    bool published_rules = false;

private:
    std::uint64_t copy_stored(block_source& blocks, stream::output& output);
    std::uint64_t expand_deflate(block_source& blocks, stream::output& output);
    std::uint64_t expand_lzx(block_source& blocks, stream::output& output);

    std::unique_ptr<algorithm::lzx::decompressor> lzx; ///< of the last LZX folder
};

} // namespace format::cab

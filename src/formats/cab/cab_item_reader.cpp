#include "formats/cab/cab_item_reader.h"

#include "codec/deflate/flate_adaptor.h"
#include "codec/lzx/lzx_decompressor.h"
#include "formats/cab/cab_constants.h"
#include "formats/cab/cab_records.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

namespace format {

item_reader::~item_reader() = default;

} // namespace format

namespace format::cab {

namespace {

constexpr unsigned copy_buffer = 65536;

[[noreturn]] void refuse(const char* reason) {
    throw format::exception(reason, "format::cab::item_reader");
}

} // namespace

item_reader::item_reader(const folder_header* expanded) : folder(expanded) {}

item_reader::~item_reader() = default;

std::uint64_t item_reader::process(stream::input& input, stream::output& output) {
    data_header block;
    block.reserve = folder->reserve;
    switch (folder->compression & compression::method_mask) {
    case compression::stored:
        return copy_stored(input, output, block);
    case compression::deflate:
        return expand_deflate(input, output, block);
    case compression::quantum:
        refuse("quantum compression method not supported");
    case compression::lzx:
        return expand_lzx(input, output, block);
    case compression::invalid:
        refuse("invalid compression method");
    default:
        refuse("unsupported compression method");
    }
}

std::uint64_t item_reader::copy_stored(stream::input& input, stream::output& output, data_header& block) {
    if (folder->block_count == 0)
        return 0;
    stream::copier copier(copy_buffer);
    std::uint64_t total = 0;
    for (std::uint32_t i = 0; i < folder->block_count; ++i) {
        try {
            block.read(input, true);
        } catch (const stream::cut_short&) {
            // No decoder needs the rest of the block, so the bytes that were read are worth keeping.
            output.write(block.payload.get(), block.received_size());
            throw;
        }
        total += copier.process(input, output, block.compressed_size);
    }
    return total;
}

std::uint64_t item_reader::expand_deflate(stream::input& input, stream::output& output, data_header& block) {
    if (folder->block_count == 0)
        return 0;
    algorithm::flate_adaptor::decompressor decoder(input, deflate_extent, true);
    std::uint64_t total = 0;
    for (std::uint32_t i = 0; i < folder->block_count; ++i) {
        block.read(input, true);
        const int first = input.read();
        const int second = input.read();
        if (first != deflate_mark_1 || second != deflate_mark_2)
            refuse("invalid deflate block artifact");
        decoder.start();
        const auto produced = decoder.copy_to(output);
        decoder.finish(); // raises the decoder's failure, of which a wrong size is only the consequence
        if (produced != block.uncompressed_size)
            refuse("Deflate decompression output size mismatch");
        total += produced;
    }
    return total;
}

std::uint64_t item_reader::expand_lzx(stream::input& input, stream::output& output, data_header& block) {
    const unsigned bits = folder->compression >> compression::window_shift & compression::window_mask;
    if (bits < compression::smallest_window || bits > compression::largest_window)
        refuse("invalid LZX compression memory ");
    if (folder->block_count == 0)
        return 0; // without a window: a small cabinet may have many empty folders
    algorithm::lzx::decompressor decoder(std::uint32_t{1} << bits);
    std::uint64_t total = 0;
    for (std::uint32_t i = 0; i < folder->block_count; ++i) {
        block.read(input, true);
        const auto produced =
            decoder.process_block(input, output, block.compressed_size, block.uncompressed_size);
        if (produced < 0 || static_cast<std::uint64_t>(produced) != block.uncompressed_size)
            refuse("LZX decompression output size mismatch");
        total += static_cast<std::uint64_t>(produced);
    }
    return total;
}

} // namespace format::cab

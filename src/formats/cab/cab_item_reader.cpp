#include "formats/cab/cab_item_reader.h"

#include "codec/deflate/flate_adaptor.h"
#include "codec/lzx/lzx_decompressor.h"
#include "formats/cab/cab_blocks.h"
#include "formats/cab/cab_constants.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

#include <optional>

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
    sequential_blocks blocks(input, *folder);
    return expand(blocks, output);
}

std::uint64_t item_reader::expand(block_source& blocks, stream::output& output) {
    switch (folder->compression & compression::method_mask) {
    case compression::stored:
        return copy_stored(blocks, output);
    case compression::deflate:
        return expand_deflate(blocks, output);
    case compression::quantum:
        refuse("quantum compression method not supported");
    case compression::lzx:
        return expand_lzx(blocks, output);
    case compression::invalid:
        refuse("invalid compression method");
    default:
        refuse("unsupported compression method");
    }
}

std::uint64_t item_reader::copy_stored(block_source& blocks, stream::output& output) {
    const auto next = [&] {
        try {
            return blocks.next();
        } catch (const stream::cut_short&) {
            // No decoder needs the rest of the block, so the bytes that were read are worth keeping.
            const auto bytes = blocks.received();
            output.write(bytes.data(), static_cast<unsigned>(bytes.size()));
            throw;
        }
    };
    std::optional<stream::copier> copier;
    std::uint64_t total = 0;
    while (next()) {
        if (!copier)
            copier.emplace(copy_buffer);
        total += copier->process(blocks.payload(), output, blocks.block.compressed_size);
    }
    return total;
}

std::uint64_t item_reader::expand_deflate(block_source& blocks, stream::output& output) {
    auto& input = blocks.payload();
    std::optional<algorithm::flate_adaptor::decompressor> decoder;
    std::uint64_t total = 0;
    try {
        while (blocks.next()) {
            if (!decoder)
                decoder.emplace(input, deflate_extent, true);
            const int first = input.read();
            const int second = input.read();
            if (first != deflate_mark_1 || second != deflate_mark_2)
                refuse("invalid deflate block artifact");
            decoder->start();
            const auto produced = decoder->copy_to(output);
            decoder->finish(); // raises the decoder's failure, of which a wrong size is only the consequence
            if (produced != blocks.block.uncompressed_size)
                refuse("Deflate decompression output size mismatch");
            total += produced;
        }
    } catch (const fs::Exception&) {
        throw; // the target's
    } catch (const qpthr::QpException&) {
        // The decoder reads ahead and seeks back. If that is impossible, what follows was read from a wrong
        // place.
        if (total > 0 && !input.seek(input.tell()))
            throw stream::exception("the archive's stream can't seek back, as MSZIP needs",
                                    "format::cab::item_reader");
        throw;
    }
    return total;
}

std::uint64_t item_reader::expand_lzx(block_source& blocks, stream::output& output) {
    const unsigned bits = folder->compression >> compression::window_shift & compression::window_mask;
    if (bits < compression::smallest_window || bits > compression::largest_window)
        refuse("invalid LZX compression memory ");
    const auto& block = blocks.block;
    const auto window = std::uint32_t{1} << bits;
    std::uint64_t total = 0;
    // Without a window before the first block: a small cabinet may have many empty folders.
    for (bool first = true; blocks.next(); first = false) {
        if (first && lzx && lzx->size_of_window() == window) {
            lzx->restart();
        } else if (first) {
            lzx.reset(); // its window first
            lzx = std::make_unique<algorithm::lzx::decompressor>(window);
        }
        if (published_rules)
            lzx->use_published_rules();
        const auto produced =
            lzx->process_block(blocks.payload(), output, block.compressed_size, block.uncompressed_size);
        if (produced < 0 || static_cast<std::uint64_t>(produced) != block.uncompressed_size)
            refuse("LZX decompression output size mismatch");
        total += static_cast<std::uint64_t>(produced);
    }
    return total;
}

} // namespace format::cab

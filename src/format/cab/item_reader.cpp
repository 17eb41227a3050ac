#include "format/cab/item_reader.h"

#include "format/cab/constants.h"
#include "format/cab/data_header.h"
#include "format/cab/folder_header.h"
#include "outside/groundwork/exception.h"
#include "stream/copier.h"

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
        block.read(input, true);
        total += copier.process(input, output, block.compressed_size);
    }
    return total;
}

std::uint64_t item_reader::expand_deflate(stream::input& /*input*/, stream::output& /*output*/,
                                          data_header& /*block*/) {
    if (folder->block_count == 0)
        return 0;
    throw un::implemented("Deflate decompression");
}

std::uint64_t item_reader::expand_lzx(stream::input& /*input*/, stream::output& /*output*/,
                                      data_header& /*block*/) {
    const unsigned bits = folder->compression >> compression::window_shift & compression::window_mask;
    if (bits < compression::smallest_window || bits > compression::largest_window)
        refuse("invalid LZX compression memory ");
    if (folder->block_count == 0)
        return 0;
    throw un::implemented("LZX decompression");
}

} // namespace format::cab

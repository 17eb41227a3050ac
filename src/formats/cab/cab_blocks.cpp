#include "formats/cab/cab_blocks.h"

#include "harbor6/stream/input.h"

namespace format::cab {

block_source::~block_source() = default;

std::string_view block_source::received() const {
    return {block.payload.get(), block.received_size()};
}

sequential_blocks::sequential_blocks(stream::input& source, const folder_header& folder)
    : input(source), left(folder.block_count) {
    block.reserve = folder.reserve;
}

sequential_blocks::~sequential_blocks() = default;

bool sequential_blocks::next() {
    if (left == 0)
        return false;
    --left;
    block.read(input, true);
    return true;
}

void sequential_blocks::skipRest() {
    for (; left > 0; --left)
        block.skip(input);
}

} // namespace format::cab

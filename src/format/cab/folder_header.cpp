#include "format/cab/folder_header.h"

#include "format/cab/archive_header.h"
#include "outside/groundwork/exception.h"
#include "stream/endian_input.h"

namespace format::cab {

folder_header::~folder_header() = default;

std::uint32_t folder_header::read(stream::input& input, bool verify) {
    input.mark = input.tell();
    stream::little_endian_input fields(input);
    data_offset = fields.read32();
    block_count = fields.read16();
    compression = fields.read16();
    if (reserve) {
        const auto passed = fields.skip(reserve->folder_size);
        if (verify && passed < reserve->folder_size)
            throw format::exception("unexpected end of input stream", "format::cab::folder_header");
    }
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

} // namespace format::cab

#include "format/cab/file_header.h"

#include "format/cab/constants.h"
#include "format/cab/text_field.h"
#include "stream/endian_input.h"

#include <algorithm>

namespace format::cab {

file_header::~file_header() = default;

std::uint32_t file_header::read(stream::input& input, bool /*verify*/) {
    input.mark = input.tell();
    stream::little_endian_input fields(input);
    size = fields.read32();
    folder_offset = fields.read32();
    folder_index = fields.read16();
    continued_from_previous = folder_index == continued::from_previous;
    continued_to_next = folder_index == continued::to_next;
    continued_both = folder_index == continued::both;
    const auto dos_date = fields.read16();
    const auto dos_time = fields.read16();
    time.set_dos(dos_date, dos_time);
    attributes.from_dos_flags(fields.read16());

    // Only once the name is decoded: in some code pages the second byte of a letter is a backslash.
    name = read_name(input);
    std::replace(name.begin(), name.end(), '\\', '/');
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

} // namespace format::cab

#pragma once

#include "stream/structure.h"

namespace format::cab {

class reserved_header;

/// One compressed stream of a cabinet. The records follow the archive header directly.
class folder_header : public format::header {
public:
    ~folder_header() override;

    /// With `verify`, reserve bytes cut short raise format::exception "unexpected end of input stream". A
    /// stream that ends inside an integer raises stream::exception.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t data_offset = 0; ///< of the first data block in the cabinet; not used
    std::uint32_t block_count = 0;
    std::uint16_t compression = 0; ///< see format::cab::compression
    /// The cabinet's reserve sizes; null, or set by whoever made the record, and never owned.
    const reserved_header* reserve = nullptr;
};

} // namespace format::cab

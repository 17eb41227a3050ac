#pragma once

#include "outside/groundwork/time.h"
#include "outside/groundwork/win32_attributes.h"
#include "stream/structure.h"

#include <string>

namespace format::cab {

/// A piece of a cabinet folder's stream. The records follow the last folder record.
class file_header : public format::header {
public:
    ~file_header() override;

    /// No field is tested: the caller knows which folder indexes there are. The name may end with the stream;
    /// a stream that ends before it raises stream::exception.
    std::uint32_t read(stream::input& input, bool verify) override;

    std::uint64_t size = 0;          ///< uncompressed
    std::uint64_t folder_offset = 0; ///< in the uncompressed folder; not used
    std::uint16_t folder_index = 0;
    bool continued_from_previous = false;
    bool continued_to_next = false;
    bool continued_both = false;
    fs::time time;
    io::win32::attributes attributes;
    std::string name; ///< UTF-8, with '/' as the only separator
};

} // namespace format::cab

#pragma once

#include "support/lzx_writer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// What a decoder gave for a run of frames, up to the first that failed.
struct lzx_outcome {
    std::vector<std::int64_t> results;
    std::vector<std::uint64_t> positions; ///< of the input, after each frame
    std::string bytes;
    unsigned writes = 0;

    bool failed() const { return !results.empty() && results.back() == -1; }
    bool operator==(const lzx_outcome&) const = default;
};

lzx_outcome lzx_decode(const std::vector<lzx_frame>& frames, std::uint32_t window_size, bool exact_only);

/// A cabinet whose folders are all LZX and whose records have no reserve.
struct lzx_cabinet {
    struct file {
        std::string name;
        std::uint32_t size, offset, folder;
    };
    struct folder {
        unsigned window_bits;
        std::vector<lzx_frame> frames;
    };
    std::vector<folder> folders;
    std::vector<file> files;
};

lzx_cabinet lzx_read_cabinet(const std::string& path);
void lzx_write_cabinet(const std::string& path, const std::string& name, unsigned window_bits,
                       const std::vector<lzx_frame>& frames);

} // namespace support

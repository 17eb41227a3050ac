#pragma once

#include "support/lzx_writer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace sample_data {

/// The path of a cabinet with one LZX folder, window 21, of 100 MB of source text ("text") or programs
/// ("programs", calls translated). Made at the first call, which takes minutes, and kept in the folder that
/// HARBOR_BENCH_CACHE names, or in one beside the system's temporary files.
std::string lzx_cabinet(const std::string& kind);

/// A cabinet whose folders are all LZX and whose records have no reserve.
struct lzx_content {
    struct file {
        std::string name;
        std::uint32_t size, offset, folder;
    };
    struct folder {
        unsigned window_bits;
        std::vector<support::lzx_frame> frames;
    };
    std::vector<folder> folders;
    std::vector<file> files;
};

lzx_content lzx_read_cabinet(const std::string& path);
} // namespace sample_data

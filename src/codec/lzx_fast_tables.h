#pragma once

#include "codec/lzx_tables.h"

namespace algorithm::lzx {

constexpr std::uint32_t fast_overhang = 64;

struct fast_tables {
    bool ready = false;
    std::uint32_t kept_size = 0;
};

} // namespace algorithm::lzx

#include "codec/lzx_decompressor.h"
namespace algorithm::lzx {
void decompressor::decode_fast(std::uint32_t) {}
} // namespace algorithm::lzx

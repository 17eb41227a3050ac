#pragma once

#include <cstdint>
#include <random>

namespace support {

/// Random 32-bit numbers, the same ones from the same seed on every platform.
using numbers = std::independent_bits_engine<std::mt19937, 32, std::uint32_t>;

} // namespace support

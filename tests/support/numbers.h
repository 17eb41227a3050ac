#pragma once

#include <cstdint>
#include <random>

namespace support {

/// Random 32-bit numbers, the same ones from the same seed on every platform.
class numbers {
public:
    explicit numbers(unsigned seed) : engine(seed) {}
    std::uint32_t operator()() { return static_cast<std::uint32_t>(engine()); }

private:
    std::mt19937 engine;
};

} // namespace support

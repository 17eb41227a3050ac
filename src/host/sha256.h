#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace host {

/// The SHA-256 digest of bytes, as FIPS 180-4 defines it.
class sha256 {
public:
    void update(std::string_view bytes);
    /// The digest of all bytes in hexadecimal digits. To be called once, at the end.
    std::string finish();

private:
    void process(const unsigned char* block);

    std::array<std::uint32_t, 8> state = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                          0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
    std::array<unsigned char, 64> pending{}; ///< bytes of a block that isn't full yet
    std::uint64_t length = 0;
};

} // namespace host

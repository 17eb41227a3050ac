#pragma once

#include <string>
#include <string_view>

namespace support {

/// The SHA-256 digest of `bytes`, in lower-case hexadecimal digits.
std::string sha256(std::string_view bytes);

} // namespace support

#pragma once

#include <cstddef>

namespace platform {

/// Tells the system that all of a large buffer is about to be written. If its memory was not used before, it
/// comes in large pages then, where the system has them. Faults for small ones take a third as long as
/// decoding.
void expect_writes(void* buffer, std::size_t length) noexcept;

} // namespace platform

#pragma once

#include "harbor6/stream/digest.h"

namespace format::cab {

/// The running checksum of cabinets: the XOR of the little-endian 32-bit words of all bytes passed to
/// update(). Records that use it read and set the members directly. It never fails. For one thread at a time.
class checksum : public algorithm::digest {
public:
    ~checksum() override;

    /// Sets `value` and `shift` to 0, and `enabled`.
    void reset() override;
    /// Adds `length` bytes, with the same result as one by one, for any `shift` and any address.
    void update(const char* bytes, unsigned length) override;
    /// Adds one byte at `shift`, which moves on to the next.
    void update(char byte) override;

    bool enabled = true;     ///< while false, update() does nothing
    std::uint32_t shift = 0; ///< bit position of the next byte in the word: 0, 8, 16 or 24
};

} // namespace format::cab

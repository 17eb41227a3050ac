#pragma once

#include "harbor6/stream/digest.h"

namespace format::cab {

/// The running checksum of cabinets: the XOR of the little-endian 32-bit words of what passes. The records
/// that use it read and set the members directly. For one thread at a time.
class checksum : public algorithm::digest {
public:
    ~checksum() override;

    /// Back to the start of a word with the value 0, and on.
    void reset() override;
    /// The same as byte by byte, from any `shift` and any address, at several words a step.
    void update(const char* bytes, unsigned length) override;
    void update(char byte) override;

    bool enabled = true;     ///< while false, bytes pass uncounted
    std::uint32_t shift = 0; ///< where the next byte goes in the word: 0, 8, 16 or 24
};

} // namespace format::cab

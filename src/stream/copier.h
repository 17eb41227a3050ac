#pragma once

#include "stream/transform.h"

#include <vector>

namespace stream {

/// Moves bytes through a buffer of its own.
class HARBOR6_API copier : public transform {
public:
    /// `buffer_size` in bytes, at least 1.
    explicit copier(unsigned buffer_size);
    ~copier() override;

    /// Moves `length` bytes, fewer at the end of `source`, and returns how many went.
    std::uint64_t process(input& source, output& target, std::uint64_t length) override;
    std::uint64_t process(input& source, output& target) override;

private:
    std::vector<char> buffer;
};

} // namespace stream

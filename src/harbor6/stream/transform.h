#pragma once

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <vector>

namespace stream {

class input;
class output;

/// The shape of whatever turns one stream into another. Both forms of process return the bytes produced and
/// raise stream::exception where a class doesn't provide them.
class HARBOR6_API transform {
public:
    transform() = default;
    transform(const transform&) = delete;
    transform& operator=(const transform&) = delete;
    virtual ~transform();

    virtual void begin();
    virtual void end();
    virtual std::uint64_t process(input& source, output& target, std::uint64_t length);
    virtual std::uint64_t process(input& source, output& target);
};

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

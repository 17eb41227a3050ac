#pragma once

#include "harbor6/groundwork/export.h"

#include <cstdint>
#include <vector>

namespace stream {

class input;
class output;

/// An operation that reads one stream and writes another. It owns neither stream and keeps none after a call.
/// One thread at a time. What the streams raise passes through; bytes may be consumed and written by then.
class HARBOR6_API transform {
public:
    transform() = default;
    transform(const transform&) = delete;
    transform& operator=(const transform&) = delete;
    virtual ~transform();

    /// Called before the first and after the last of a series of process calls; nothing by default.
    virtual void begin();
    virtual void end();
    /// Produces up to `length` bytes from `source` and returns how many; fewer only at the end of the source.
    /// Raises stream::exception in a class that doesn't override it.
    virtual std::uint64_t process(input& source, output& target, std::uint64_t length);
    /// Processes all that remains of `source` and returns the number of bytes produced. Raises
    /// stream::exception in a class that doesn't override it.
    virtual std::uint64_t process(input& source, output& target);
};

/// Copies bytes unchanged through a buffer of its own.
class HARBOR6_API copier : public transform {
public:
    /// Allocates a buffer of `buffer_size` bytes, 0 counting as 1.
    explicit copier(unsigned buffer_size);
    ~copier() override;

    /// The source's reads must be short only at the end, as those of stream::input are.
    std::uint64_t process(input& source, output& target, std::uint64_t length) override;
    std::uint64_t process(input& source, output& target) override;

private:
    std::vector<char> buffer;
};

} // namespace stream

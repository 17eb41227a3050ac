#pragma once

#include "outside/groundwork/export.h"

#include <cstdint>

namespace nio {

/// A source of bytes, the least that a pipe or a decoder needs. One thread at a time uses a stream. The end
/// of the data is no failure: reads come short.
class HARBOR6_API input {
public:
    input() = default;
    input(const input&) = delete;
    input& operator=(const input&) = delete;
    virtual ~input();

    /// Begin and end of a run over a stream that needs them; nothing by default.
    virtual void start();
    virtual void finish();
    /// Tells the other side that nothing more will be read; nothing by default.
    virtual void abort();
    /// Takes up to `length` bytes and returns how many came.
    virtual unsigned read(char* buffer, unsigned length) = 0;
    /// The next byte as 0 to 255, -1 at the end.
    virtual int get();
    /// Sets what tell() says; moves nothing.
    virtual void set_tell(std::uint64_t value);
    virtual std::uint64_t tell() const;
    /// Goes to a position if the stream can, and says whether it did.
    virtual bool seek(std::uint64_t value);
    /// All ones where the stream cannot tell.
    virtual std::uint64_t size() const;

protected:
    std::uint64_t position = 0;
};

} // namespace nio

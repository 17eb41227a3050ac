#pragma once

#include "outside/groundwork/export.h"

#include <cstdint>

namespace nio {

/// A sink of bytes. A write takes every byte or raises an exception.
class HARBOR6_API output {
public:
    output() = default;
    output(const output&) = delete;
    output& operator=(const output&) = delete;
    virtual ~output();

    /// Begin and end of a run over a stream that needs them; nothing by default.
    virtual void start();
    virtual void finish();
    virtual void write(const char* buffer, unsigned length) = 0;
    virtual void put(char byte);
    virtual void flush();
    /// Sets what tell() says; moves nothing.
    virtual void set_tell(std::uint64_t value);
    virtual std::uint64_t tell() const;
    /// Goes to a position if the stream can, and says whether it did.
    virtual bool seek(std::uint64_t value);
    /// The position, where the stream knows no more.
    virtual std::uint64_t size() const;

protected:
    std::uint64_t position = 0;
};

} // namespace nio

#pragma once

#include "harbor6/stream/nio.h"

#include <string>

namespace stream {

class input;

/// A target of bytes that also takes text and whole streams. A class implements write(byte) and tell(), and
/// write(buffer, length) if it can do better than byte by byte. Every write takes all bytes or raises an
/// exception. One thread at a time uses a stream. The destructor calls no virtual operation: a class that has
/// to close does so in its own.
class HARBOR6_API output : public nio::output {
public:
    ~output() override;

    /// Writes byte by byte by default.
    void write(const char* buffer, unsigned length) override;
    /// By default true only if `value` is the present position; never moves.
    bool seek(std::uint64_t value) override;
    void flush() override;
    /// The position by default.
    std::uint64_t size() const override;
    std::uint64_t tell() const override = 0;

    /// Writes the bytes of `text`, without a terminator.
    virtual void write(const std::string& text);
    virtual void write(char byte) = 0;
    /// Writes all that remains of `source`, by its copy_to by default.
    virtual void copy_from(input& source);
    /// Sets the size in bytes. Raises un::implemented by default.
    virtual void resize(std::uint64_t size);
    /// Passes on what is buffered; these call flush() by default.
    virtual void sync();
    virtual void close();
};

/// Discards what is written and counts it. Never fails by itself.
class HARBOR6_API infinite_output : public output {
public:
    ~infinite_output() override;

    using output::write;

    void write(const char* buffer, unsigned length) override;
    /// The number of bytes written, or the last resize() plus those written since.
    std::uint64_t tell() const override;
    void write(char byte) override;
    /// Skips all that remains of `source` and counts it.
    void copy_from(input& source) override;
    /// Sets the count.
    void resize(std::uint64_t size) override;
};

} // namespace stream

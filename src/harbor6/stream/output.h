#pragma once

#include "harbor6/stream/nio.h"

#include <string>

namespace stream {

class input;

/// A sink of bytes that also takes text and whole streams. The destructor calls no overridden operation: a
/// class that has to close does so in its own.
class HARBOR6_API output : public nio::output {
public:
    ~output() override;

    /// Byte by byte, where a class doesn't do better.
    void write(const char* buffer, unsigned length) override;
    /// Answers true only for the place where the stream already stands.
    bool seek(std::uint64_t value) override;
    void flush() override;
    std::uint64_t size() const override;
    std::uint64_t tell() const override = 0;

    virtual void write(const std::string& text);
    virtual void write(char byte) = 0;
    /// Takes all that remains of `source`.
    virtual void copy_from(input& source);
    /// Raises un::implemented, where a class doesn't do better.
    virtual void resize(std::uint64_t size);
    virtual void sync();
    virtual void close();
};

/// Takes whatever is written and keeps nothing but the count.
class HARBOR6_API infinite_output : public output {
public:
    ~infinite_output() override;

    using output::write;

    void write(const char* buffer, unsigned length) override;
    std::uint64_t tell() const override;
    void write(char byte) override;
    void copy_from(input& source) override;
    /// Sets the count.
    void resize(std::uint64_t size) override;
};

} // namespace stream

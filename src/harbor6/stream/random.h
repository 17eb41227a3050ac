#pragma once

#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

namespace stream::random {

/// A source that can go anywhere: a push-back is a step back in it, the bytes are not looked at, and a skip
/// is one seek that never passes the end. The base is virtual so that a class can be a plain stream and a
/// random one at once.
class HARBOR6_API input : public virtual stream::input {
public:
    /// Calls close(); what that raises ends there.
    ~input() override;

    using stream::input::read;

    void start() override;
    void finish() override;
    bool seek(std::uint64_t value) override = 0;
    std::uint64_t size() const override = 0;
    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;
    std::uint64_t skip(std::uint64_t count) override;
    void close() override;

protected:
    using stream::input::_read;
    int _read() override = 0;
    std::uint64_t _tell() const override = 0;
};

/// A sink that can go anywhere.
class HARBOR6_API output : public virtual stream::output {
public:
    /// Calls flush(), then close(); what those raise ends there.
    ~output() override;

    using stream::output::write;

    void start() override;
    void finish() override;
    std::uint64_t tell() const override = 0;
    bool seek(std::uint64_t value) override = 0;
    std::uint64_t size() const override = 0;
    void write(char byte) override = 0;
    void resize(std::uint64_t size) override = 0;
};

} // namespace stream::random

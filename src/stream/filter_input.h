#pragma once

#include "stream/input.h"

namespace stream {

/// Forwards to another stream, which it doesn't own and which must outlive it. Bytes pushed back stay in the
/// filter. With no stream attached every operation that needs one raises stream::exception.
class HARBOR6_API filter_input : public virtual input {
public:
    explicit filter_input(input* source);
    ~filter_input() override;

    using input::read;

    std::uint64_t size() const override;
    void close() override;

    virtual void attach(input* source);
    virtual input* attached() const;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _skip(std::uint64_t count) override;
    std::uint64_t _tell() const override;

private:
    input& wrapped() const;

    input* inner;
};

/// A filter whose push-back goes to the wrapped stream too, so that it holds no bytes of its own.
class HARBOR6_API direct_input : public filter_input {
public:
    explicit direct_input(input* source);
    ~direct_input() override;

    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;

private:
    input& receiver() const;
};

} // namespace stream

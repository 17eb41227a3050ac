#pragma once

#include "harbor6/stream/input.h"
#include "harbor6/stream/nio.h"
#include "harbor6/stream/output.h"

#include <memory>

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

/// Gives a nio::input, which it owns, the interface of stream::input. `size` and `close` stay the filter's
/// and reach `source`, the stream that the nio::input takes its bytes from.
template<class Input>
class adapter_input : public filter_input {
public:
    adapter_input(input* source, std::unique_ptr<Input> owned)
        : filter_input(source), adapted(std::move(owned)) {}

    using input::read;

    void start() override { adapted->start(); }
    void finish() override { adapted->finish(); }

protected:
    unsigned _read(char* buffer, unsigned length) override { return adapted->read(buffer, length); }
    int _read() override { return adapted->get(); }
    std::uint64_t _skip(std::uint64_t count) override { return nio::skip(*adapted, count, 65536); }
    std::uint64_t _tell() const override { return adapted->tell(); }

private:
    std::unique_ptr<Input> adapted;
};

/// Creates the nio::input that it adapts, from the source, a compression extent and the rewind flag.
template<class Input>
class adapter_2_input : public adapter_input<Input> {
public:
    adapter_2_input(input& source, unsigned extent, bool rewind)
        : adapter_input<Input>(&source, std::make_unique<Input>(source, extent, rewind)) {}
};

/// Forwards to another stream, which it doesn't own and which must outlive it. With no stream attached every
/// operation that needs one raises stream::exception.
class HARBOR6_API filter_output : public virtual output {
public:
    explicit filter_output(output* target);
    ~filter_output() override;

    void write(const char* buffer, unsigned length) override;
    std::uint64_t tell() const override;
    void write(const std::string& text) override;
    void write(char byte) override;
    void copy_from(input& source) override;
    void resize(std::uint64_t size) override;
    /// The filter's own flush(), then sync() of the wrapped stream.
    void sync() override;
    void close() override;

    virtual void attach(output* target);
    virtual output* attached() const;

private:
    output& wrapped() const;

    output* inner;
};

} // namespace stream

#pragma once

#include "harbor6/stream/input.h"
#include "harbor6/stream/nio.h"
#include "harbor6/stream/output.h"

#include <memory>

namespace stream {

// Filters forward to a wrapped stream, with its results and its exceptions. They don't own it, and destroying
// a filter leaves it open; it must outlive the filter or be replaced. Using a filter without a wrapped stream
// is a mistake of the caller and raises stream::exception "no stream is attached". One thread at a time uses
// a filter and the stream below it.

/// Forwards reading. Pushed-back bytes stay in the filter. start, finish, abort and set_tell aren't
/// forwarded, and seek returns false.
class HARBOR6_API filter_input : public virtual input {
public:
    /// `source` may be null and attached later.
    explicit filter_input(input* source);
    ~filter_input() override;

    using input::read;

    /// The wrapped stream's size.
    std::uint64_t size() const override;
    /// Closes the wrapped stream.
    void close() override;

    /// Replaces the wrapped stream; null detaches it. Pushed-back bytes stay and are delivered first.
    virtual void attach(input* source);
    /// The wrapped stream, or null.
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

/// A filter_input that pushes bytes back into the wrapped stream and so stores none.
class HARBOR6_API direct_input : public filter_input {
public:
    explicit direct_input(input* source);
    ~direct_input() override;

    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;

private:
    input& receiver() const;
};

/// Gives `Input`, a class derived from nio::input, the interface of stream::input. It owns the adapted
/// object, but not `source`, from which that object takes its bytes and to which size() and close() apply.
/// Reads, start and finish go to the adapted object; a read of it must return fewer bytes only at the end.
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
    /// The copy_to() of the adapted object, if it has one.
    std::uint64_t _copy_to(output& target) override {
        if constexpr (requires { adapted->copy_to(target); })
            return adapted->copy_to(target);
        else
            return filter_input::_copy_to(target);
    }
    std::uint64_t _tell() const override { return adapted->tell(); }

private:
    std::unique_ptr<Input> adapted;
};

/// An adapter_input that creates the object it adapts as Input(source, extent, rewind).
template<class Input>
class adapter_2_input : public adapter_input<Input> {
public:
    adapter_2_input(input& source, unsigned extent, bool rewind)
        : adapter_input<Input>(&source, std::make_unique<Input>(source, extent, rewind)) {}
};

/// Forwards writing. start, finish, flush, seek and set_tell aren't forwarded; size() is tell().
class HARBOR6_API filter_output : public virtual output {
public:
    /// `target` may be null and attached later.
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
    /// Closes the wrapped stream, without a flush() of the filter.
    void close() override;

    /// Replaces the wrapped stream; null detaches it.
    virtual void attach(output* target);
    /// The wrapped stream, or null.
    virtual output* attached() const;

private:
    output& wrapped() const;

    output* inner;
};

} // namespace stream

#pragma once

#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

namespace stream::random {

/// A source that can seek. Pushing back steps back in the source, and skipping is one seek. The base is
/// virtual, so that a class can derive from this and from a plain stream class and remain one stream. One
/// thread at a time; failures are those of the concrete class.
class HARBOR6_API input : public virtual stream::input {
public:
    /// Calls this class's own close(), which does nothing; a class that has to close does so in its own
    /// destructor.
    ~input() override;

    using stream::input::read;

    /// Nothing by default.
    void start() override;
    void finish() override;
    /// Moves to position `value`, at most size(). Returns false, with the position unchanged, if it can't.
    bool seek(std::uint64_t value) override = 0;
    /// The size of the whole source; always known.
    std::uint64_t size() const override = 0;
    /// Step back by `length` bytes, or by one. The arguments are not looked at: the source's own bytes are
    /// delivered again.
    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;
    /// Seeks forward by `count` bytes, to the end at most, and returns by how many; 0 at the end.
    std::uint64_t skip(std::uint64_t count) override;
    void close() override;

protected:
    using stream::input::_read;
    int _read() override = 0;
    std::uint64_t _tell() const override = 0;
};

/// A target that can seek and be resized. One thread at a time; failures are those of the concrete class.
class HARBOR6_API output : public virtual stream::output {
public:
    /// Calls this class's own flush() and close(), which do nothing; a class that has to close does so in its
    /// own destructor.
    ~output() override;

    using stream::output::write;

    /// Nothing by default.
    void start() override;
    void finish() override;
    std::uint64_t tell() const override = 0;
    /// Moves to position `value`. Returns false, with the position unchanged, if it can't.
    bool seek(std::uint64_t value) override = 0;
    /// The size of the whole target.
    std::uint64_t size() const override = 0;
    void write(char byte) override = 0;
    /// Sets the size in bytes: what is beyond it is dropped, what is missing is filled.
    void resize(std::uint64_t size) override = 0;
};

} // namespace stream::random

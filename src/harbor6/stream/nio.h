#pragma once

#include "harbor6/groundwork/export.h"

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

/// Forwards reads to another nio::input, the source, which it doesn't own and which must outlive it or be
/// replaced. It counts its own position from where the source stood when it was attached. One thread at a
/// time, the one that may use the source.
class HARBOR6_API filter_input : public input {
public:
    /// Attaches `source`, which may be null as long as nothing is read.
    explicit filter_input(input* source);
    ~filter_input() override;

    /// Reads from the source and moves the position by what came.
    unsigned read(char* buffer, unsigned length) override;

    /// Takes another source and its position.
    virtual void attach(input* source);
    virtual input* attached() const;

private:
    input* inner = nullptr;
};

/// A filter that keeps the source's position as its own.
class HARBOR6_API direct_input : public filter_input {
public:
    explicit direct_input(input* source);
    ~direct_input() override;

    /// Takes the source's position afresh.
    void start() override;
    /// Asks the source; the position stays if it refuses.
    bool seek(std::uint64_t value) override;
    /// The source's.
    std::uint64_t size() const override;
};

/// Moves up to `limit` bytes (all ones: no limit) in pieces of at most `chunk` bytes and returns how many
/// went. A `chunk` of 0 is taken as 1.
HARBOR6_API std::uint64_t copy(input& source, output& target, std::uint64_t limit, unsigned chunk);

/// Reads and drops up to `count` bytes in pieces of at most `chunk` and returns how many there were.
HARBOR6_API std::uint64_t skip(input& source, std::uint64_t count, unsigned chunk);

} // namespace nio

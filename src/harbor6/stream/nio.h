#pragma once

// The lower layer of streams: bytes without push-back, as the pipe, the read-ahead and the decoders need
// them, and the filters that forward to a source. Positions and sizes are in bytes. The end of the data is no
// failure: reads return fewer bytes than asked for. No class of this header raises an exception of its own;
// what a source or a target raises passes through. A stream has no lock: one thread at a time uses it, unless
// its class documents otherwise.

#include "harbor6/groundwork/export.h"

#include <cstdint>

namespace nio {

/// A source of bytes.
class HARBOR6_API input {
public:
    input() = default;
    input(const input&) = delete;
    input& operator=(const input&) = delete;
    virtual ~input();

    /// Begin and end a run over a stream that needs this; nothing by default.
    virtual void start();
    virtual void finish();
    /// Tells the other side that nothing more will be read; nothing by default.
    virtual void abort();
    /// Reads up to `length` bytes into `buffer` and returns how many. Fewer than `length` imply the end only
    /// where the class documents it; 0 for a `length` above 0 does everywhere.
    virtual unsigned read(char* buffer, unsigned length) = 0;
    /// The next byte as 0 to 255, -1 at the end.
    virtual int get();
    /// Sets the position that tell() reports; the next byte stays the same.
    virtual void set_tell(std::uint64_t value);
    /// The position of the next byte.
    virtual std::uint64_t tell() const;
    /// Moves to position `value`. Returns false, with the position unchanged, if the stream can't; so by
    /// default.
    virtual bool seek(std::uint64_t value);
    /// The size of the whole stream; all ones if unknown, as by default.
    virtual std::uint64_t size() const;

protected:
    std::uint64_t position = 0; ///< what tell() returns by default; a class that delivers bytes advances it
};

/// A target of bytes. A write takes every byte or raises an exception.
class HARBOR6_API output {
public:
    output() = default;
    output(const output&) = delete;
    output& operator=(const output&) = delete;
    virtual ~output();

    /// Begin and end a run over a stream that needs this; nothing by default.
    virtual void start();
    virtual void finish();
    /// Writes all `length` bytes of `buffer`, which is the caller's again on return.
    virtual void write(const char* buffer, unsigned length) = 0;
    virtual void put(char byte);
    /// Passes on what the stream has buffered; nothing by default.
    virtual void flush();
    /// Sets the position that tell() reports; the place of the next byte stays the same.
    virtual void set_tell(std::uint64_t value);
    /// The position of the next byte.
    virtual std::uint64_t tell() const;
    /// Moves to position `value`. Returns false, with the position unchanged, if the stream can't; so by
    /// default.
    virtual bool seek(std::uint64_t value);
    /// The size of the whole stream; the position by default.
    virtual std::uint64_t size() const;

protected:
    std::uint64_t position = 0; ///< what tell() returns by default; a class that takes bytes advances it
};

/// Forwards reads to another nio::input, the source, which it doesn't own and which must outlive it or be
/// replaced. Its position starts at the source's when attached and advances by what is read through the
/// filter. One thread at a time, the one that may use the source.
class HARBOR6_API filter_input : public input {
public:
    /// Attaches `source`. It may be null, but reading then is undefined.
    explicit filter_input(input* source);
    ~filter_input() override;

    /// Reads from the source, with its result, and advances the position by it.
    unsigned read(char* buffer, unsigned length) override;

    /// Replaces the source and takes over its position. With null the position stays.
    virtual void attach(input* source);
    /// The source, or null.
    virtual input* attached() const;

private:
    input* inner = nullptr;
};

/// A filter_input whose position is the source's. Every operation needs a source.
class HARBOR6_API direct_input : public filter_input {
public:
    explicit direct_input(input* source);
    ~direct_input() override;

    /// Sets the position to the source's.
    void start() override;
    /// Seeks the source and returns its result; the position stays if that is false.
    bool seek(std::uint64_t value) override;
    /// The source's size.
    std::uint64_t size() const override;
};

/// Copies up to `limit` bytes (all ones: no limit) in pieces of at most `chunk` bytes, 0 counting as 1, and
/// returns how many. It allocates one piece, and ends early at the first read that returns 0.
HARBOR6_API std::uint64_t copy(input& source, output& target, std::uint64_t limit, unsigned chunk);

/// As copy(), but drops the bytes.
HARBOR6_API std::uint64_t skip(input& source, std::uint64_t count, unsigned chunk);

} // namespace nio

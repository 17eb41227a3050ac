#pragma once

#include "harbor6/stream/nio.h"

#include <vector>

namespace stream {

class output;

/// A source of bytes with push-back, skipping and whole copies. The public operations are a frame around
/// protected hooks: a class that makes bytes supplies _read() and _tell(), and _read(buffer, length) where it
/// can do better than byte by byte; one that must see every byte overrides _read(), _read(buffer, length) and
/// _skip. Bytes pushed back are kept here and delivered ahead of the hooks, unless a class keeps them itself
/// by overriding unread.
class HARBOR6_API input : public nio::input {
public:
    ~input() override;

    /// Takes up to `length` bytes, fewer only at the end.
    unsigned read(char* buffer, unsigned length) override;
    /// The place of the next byte to be delivered.
    std::uint64_t tell() const override;

    /// The next byte as 0 to 255, -1 at the end.
    virtual int read();
    /// Takes bytes back: every kind of read delivers them next, in their order, and tell() steps back by
    /// `length`.
    virtual void unread(const char* bytes, unsigned length);
    virtual void unread(char byte);
    /// Passes over up to `count` bytes and returns how many there were, fewer only at the end.
    virtual std::uint64_t skip(std::uint64_t count);
    /// Writes all that remains to `target` and returns the number of bytes.
    virtual std::uint64_t copy_to(output& target);
    virtual void close();

    /// Where a record's reader notes tell() on entry.
    std::uint64_t mark = 0;

protected:
    virtual unsigned _read(char* buffer, unsigned length);
    virtual int _read() = 0;
    virtual std::uint64_t _skip(std::uint64_t count);
    /// Reads through _read(buffer, length) until a read gives nothing.
    virtual std::uint64_t _copy_to(output& target);
    virtual std::uint64_t _tell() const = 0;

private:
    std::uint64_t pushed_count() const;

    std::vector<char> pushed; ///< bytes pushed back stand at the end, from `pushed_start` on
    std::size_t pushed_start = 0;
};

} // namespace stream

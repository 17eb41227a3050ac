#pragma once

#include "harbor6/stream/nio.h"

#include <vector>

namespace stream {

class output;

/// A source of bytes with push-back, skipping and copying of all that remains. The public operations deliver
/// pushed-back bytes first and then call the protected hooks. A class that produces bytes overrides _read()
/// and _tell(), and _read(buffer, length) if it can do better than byte by byte; one that must see every byte
/// overrides _read(), _read(buffer, length) and _skip. A class may store pushed-back bytes itself by
/// overriding unread. One thread at a time uses a stream. Failures are those of the hooks, and std::bad_alloc
/// of unread.
class HARBOR6_API input : public nio::input {
public:
    ~input() override;

    /// Reads up to `length` bytes and returns how many; fewer only at the end.
    unsigned read(char* buffer, unsigned length) override;
    /// The position of the next byte to be delivered.
    std::uint64_t tell() const override;

    /// The next byte as 0 to 255, -1 at the end.
    virtual int read();
    /// Puts back `length` bytes, copied from `bytes`: reads of every kind deliver them next, in their order,
    /// and tell() steps back by `length`. There must be that many bytes before the position.
    virtual void unread(const char* bytes, unsigned length);
    virtual void unread(char byte);
    /// Passes over up to `count` bytes and returns how many; fewer only at the end.
    virtual std::uint64_t skip(std::uint64_t count);
    /// Writes all that remains to `target` and returns the number of bytes, 0 at the end. After an exception
    /// of the target the position is unspecified.
    virtual std::uint64_t copy_to(output& target);
    /// Nothing by default.
    virtual void close();

    /// Free for a reader of records, which keeps here the position where its record begins.
    std::uint64_t mark = 0;

protected:
    // The hooks behind the public operations of the same name, which handle pushed-back bytes. The same
    // results.
    virtual unsigned _read(char* buffer, unsigned length);
    virtual int _read() = 0;
    virtual std::uint64_t _skip(std::uint64_t count);
    /// Reads through _read(buffer, length) until that returns 0.
    virtual std::uint64_t _copy_to(output& target);
    virtual std::uint64_t _tell() const = 0;

private:
    std::uint64_t pushed_count() const;

    std::vector<char> pushed; ///< the pushed-back bytes are those from `pushed_start` on
    std::size_t pushed_start = 0;
};

} // namespace stream

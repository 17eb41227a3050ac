#pragma once

#include "harbor6/stream/filters.h"

#include <cstdint>
#include <vector>

namespace algorithm {

/// A running digest (checksum or hash) of bytes: reset, any number of updates, finish, then read the value.
/// One thread at a time. None of the operations fails unless a derived class documents it.
class HARBOR6_API digest {
public:
    digest() = default;
    digest(const digest&) = delete;
    digest& operator=(const digest&) = delete;
    virtual ~digest();

    /// Parameters for a class that needs some; ignored by default.
    virtual void prepare(std::uint64_t a, std::uint64_t b);
    /// Begins a new digest; nothing by default.
    virtual void reset();
    /// Adds `length` bytes, in their order, with the same effect as one by one; `bytes` is not kept.
    virtual void update(const char* bytes, unsigned length) = 0;
    virtual void update(char byte) = 0;
    /// Completes the value after the last byte; nothing by default.
    virtual void finish();

    std::uint32_t value = 0; ///< the digest of the bytes so far, or since finish() if the class needs that
    std::vector<char> long_value; ///< a digest of more than 32 bits; otherwise empty
};

/// Passes an input through and adds every byte that is read or skipped to a digest. Owns neither; both must
/// outlive it. Bytes pushed back into this filter and read again count once, those pushed back into the
/// source count again. Failures are those of the source, and the failed read adds nothing. One thread at a
/// time.
class HARBOR6_API digest_input : public stream::filter_input {
public:
    digest_input(stream::input* source, algorithm::digest* digest);
    ~digest_input() override;

    using stream::input::read;

    /// Resets the digest; the source isn't involved.
    void start() override;
    /// Finishes the digest; the source isn't involved.
    void finish() override;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    /// Reads byte by byte, so that skipped bytes are added too.
    std::uint64_t _skip(std::uint64_t count) override;

private:
    algorithm::digest* digest;
};

} // namespace algorithm

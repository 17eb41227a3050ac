#pragma once

#include "harbor6/stream/filters.h"

#include <vector>

namespace algorithm {

/// A running digest of bytes.
class HARBOR6_API digest {
public:
    digest() = default;
    digest(const digest&) = delete;
    digest& operator=(const digest&) = delete;
    virtual ~digest();

    virtual void prepare(std::uint64_t a, std::uint64_t b);
    virtual void reset();
    virtual void update(const char* bytes, unsigned length) = 0;
    virtual void update(char byte) = 0;
    virtual void finish();

    std::uint32_t value = 0;
    std::vector<char> long_value; ///< of a digest of more than one word
};

/// Feeds a digest, which it doesn't own, with every byte that is read or skipped through it.
class HARBOR6_API digest_input : public stream::filter_input {
public:
    digest_input(stream::input* source, algorithm::digest* digest);
    ~digest_input() override;

    using stream::input::read;

    void start() override;
    void finish() override;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _skip(std::uint64_t count) override;

private:
    algorithm::digest* digest;
};

} // namespace algorithm

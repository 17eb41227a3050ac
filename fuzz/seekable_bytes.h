#pragma once

#include "harbor6/stream/random.h"

#include <algorithm>
#include <cstring>

/// Reads bytes that it doesn't own, and seeks in them, as a host's streams do.
class seekable_bytes : public stream::random::input {
public:
    seekable_bytes(const char* data, std::size_t size) : bytes(data), length(size) {}

    using stream::input::read;

    bool seek(std::uint64_t value) override { return value <= length && (place = value, true); }
    std::uint64_t size() const override { return length; }

protected:
    unsigned _read(char* buffer, unsigned wanted) override {
        const auto count = static_cast<unsigned>(std::min<std::uint64_t>(wanted, length - place));
        std::memcpy(buffer, bytes + place, count);
        place += count;
        return count;
    }
    int _read() override { return place < length ? static_cast<unsigned char>(bytes[place++]) : -1; }
    std::uint64_t _tell() const override { return place; }

private:
    const char* bytes;
    std::uint64_t length;
    std::uint64_t place = 0;
};

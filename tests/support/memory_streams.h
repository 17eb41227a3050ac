#pragma once

#include "harbor6/stream/array_input.h"
#include "harbor6/stream/output.h"
#include "harbor6/stream/random.h"

#include <algorithm>
#include <string>

namespace support {

/// A base of memory_input, so that the text is constructed before the stream that reads it.
struct owned_text {
    std::string text;
};

/// Reads text that it owns.
class memory_input : private owned_text, public stream::array_input {
public:
    explicit memory_input(std::string source)
        : owned_text{std::move(source)}, stream::array_input(
                                             {text.data(), static_cast<unsigned>(text.size())}, 0) {}

    /// All that is left.
    std::string rest() {
        std::string left;
        for (int byte = read(); byte >= 0; byte = read())
            left.push_back(static_cast<char>(byte));
        return left;
    }
};

/// Steps back in its own bytes for a push-back or a seek, as a host's storage stream does. A read returns at
/// most `piece` bytes.
class seekable_input : public stream::random::input {
public:
    explicit seekable_input(std::string source, unsigned most = ~0u) : text(std::move(source)), piece(most) {}

    using stream::input::read;

    bool seek(std::uint64_t value) override { return value <= text.size() && (place = value, true); }
    std::uint64_t size() const override { return text.size(); }

protected:
    unsigned _read(char* buffer, unsigned length) override {
        const auto count = text.copy(buffer, std::min(length, piece), place);
        place += count;
        return static_cast<unsigned>(count);
    }
    int _read() override { return place < text.size() ? static_cast<unsigned char>(text[place++]) : -1; }
    std::uint64_t _tell() const override { return place; }

    std::string text;

private:
    unsigned piece;
    std::uint64_t place = 0;
};

/// Stores what is written, and counts the writes of more than one byte and the calls of finish().
class memory_output : public stream::output {
public:
    using stream::output::write;

    void write(const char* buffer, unsigned length) override { bytes.append(buffer, length), ++writes; }
    void write(char byte) override { bytes.push_back(byte); }
    std::uint64_t tell() const override { return bytes.size(); }

    void finish() override { ++finished; }

    std::string bytes;
    unsigned writes = 0;
    unsigned finished = 0;
};

} // namespace support

#pragma once

#include "stream/array_input.h"
#include "stream/output.h"

#include <string>

namespace support {

/// Makes the text of a memory_input stand before the stream that reads it.
struct owned_text {
    std::string text;
};

/// Reads a text that it owns.
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

/// Keeps what is written.
class memory_output : public stream::output {
public:
    using stream::output::write;

    void write(const char* buffer, unsigned length) override { bytes.append(buffer, length); }
    void write(char byte) override { bytes.push_back(byte); }
    std::uint64_t tell() const override { return bytes.size(); }

    std::string bytes;
};

} // namespace support

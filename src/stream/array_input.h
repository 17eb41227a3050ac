#pragma once

#include "stream/array.h"
#include "stream/input.h"

namespace stream {

/// Reads memory in place; the bytes must outlive the stream. tell() counts from the array's start.
class HARBOR6_API array_input : public virtual input {
public:
    /// Starts at `offset`, at the end if `offset` lies behind it.
    array_input(const un::array<char>& bytes, unsigned offset);
    ~array_input() override;

    using input::read;

    std::uint64_t size() const override;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _skip(std::uint64_t count) override;
    std::uint64_t _tell() const override;

private:
    unsigned advance(std::uint64_t wanted);

    un::array<char> bytes;
    unsigned next;
};

} // namespace stream

#pragma once

#include "harbor6/stream/input.h"

#include <string_view>

namespace un {

/// A run of items that somebody else owns.
template<class T>
class array {
public:
    array() = default;
    array(const T* start, unsigned length) : first(start), count(length) {}
    /// The bytes of a zero-terminated text before its terminator.
    explicit array(const T* text) : array(text, static_cast<unsigned>(std::char_traits<T>::length(text))) {}

    const T* begin() const { return first; }
    const T* end() const { return first + count; }
    unsigned length() const { return count; }

private:
    const T* first = nullptr;
    unsigned count = 0;
};

} // namespace un

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

#pragma once

#include "harbor6/stream/input.h"

#include <string_view>

namespace un {

/// Pointer and length of items that it doesn't own; they must outlive it. Operations never fail.
template<class T>
class array {
public:
    array() = default;
    array(const T* start, unsigned length) : first(start), count(length) {}
    /// The bytes of a zero-terminated text before its terminator.
    explicit array(const T* text) : array(text, static_cast<unsigned>(std::char_traits<T>::length(text))) {}

    /// The first item and the place after the last one; null in an empty default array.
    const T* begin() const { return first; }
    const T* end() const { return first + count; }
    unsigned length() const { return count; }

private:
    const T* first = nullptr;
    unsigned count = 0;
};

} // namespace un

namespace stream {

/// Reads memory in place. It copies nothing: the bytes must outlive the stream and stay unchanged. tell()
/// counts from the start of the array. Can't seek: memory_input can, which archives need. Never fails: at the
/// end reads return fewer bytes. One thread at a time.
class HARBOR6_API array_input : public virtual input {
public:
    /// Starts at `offset`, or at the end of the array if that is smaller.
    array_input(const un::array<char>& bytes, unsigned offset);
    ~array_input() override;

    using input::read;

    /// The length of the whole array.
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

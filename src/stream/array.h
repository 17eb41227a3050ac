#pragma once

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

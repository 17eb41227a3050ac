#pragma once

#include "harbor6/groundwork/export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

namespace host {

/// Owns one file descriptor, or none (-1), and closes it.
class HARBOR6_API file_descriptor {
public:
    file_descriptor() = default;
    explicit file_descriptor(int owned) : number(owned) {}
    file_descriptor(file_descriptor&& other) noexcept;
    file_descriptor& operator=(file_descriptor&& other) noexcept;
    ~file_descriptor();

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }
    /// Returns the descriptor, which then belongs to the caller.
    int release() { return std::exchange(number, -1); }
    /// Closes now and returns the error number, 0 on success or if nothing was open.
    int close();

private:
    int number = -1;
};

// Reading and writing that goes on after a signal interrupted it. With `offset` the bytes are those at that
// place of a plain file, and the descriptor's own position stays; without, those at its position.

/// Reads up to `length` bytes. Returns their number, 0 at the end of the data, or -1 and leaves the error
/// number in errno.
HARBOR6_API std::ptrdiff_t read_some(int descriptor, char* buffer, std::size_t length,
                                     std::optional<std::uint64_t> offset = {});
/// What a write_all achieved. `error` is 0 if all was written.
struct write_result {
    std::size_t written = 0; ///< bytes
    int error = 0;           ///< its number
};
HARBOR6_API write_result write_all(int descriptor, std::string_view bytes,
                                   std::optional<std::uint64_t> offset = {});

} // namespace host

#pragma once

#include "harbor6/groundwork/exception.h"

#include <string>
#include <utility>

namespace host {

/// Owns one file descriptor, or none (-1), and closes it.
class file_descriptor {
public:
    file_descriptor() = default;
    explicit file_descriptor(int owned) : number(owned) {}
    file_descriptor(file_descriptor&& other) noexcept;
    file_descriptor& operator=(file_descriptor&& other) noexcept;
    ~file_descriptor();

    int get() const { return number; }
    explicit operator bool() const { return number >= 0; }
    /// Gives the descriptor away.
    int release() { return std::exchange(number, -1); }
    /// Closes now and returns the error number, 0 if all went well or nothing was open.
    int close();

private:
    int number = -1;
};

/// A failure that concerns one name alone: something else stands there, or no disk can bear it. What else
/// there is to write can still be written.
class path_error : public fs::Exception {
public:
    using fs::Exception::Exception;
};

/// Raises `error` for `name` (relative to the target, or as the user gave it), as a path_error if it
/// concerns that name alone, else as a plain fs::Exception. The text is "cannot ACTION NAME: CAUSE".
[[noreturn]] void throw_system_error(const std::string& action, const std::string& name, int error);

/// The platform's words for an error number.
std::string error_text(int error);

} // namespace host

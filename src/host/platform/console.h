#pragma once

#include <string>
#include <string_view>

namespace host {

/// The standard output, buffered. Once its reader has closed the pipe, further output is dropped silently;
/// any other failure is kept for `finish`. Making one lets the process ignore SIGPIPE and SIGXFSZ, so that
/// such writes fail instead of ending it. One thread.
class console {
public:
    console();
    console(const console&) = delete;
    console& operator=(const console&) = delete;
    ~console();

    void print(std::string_view text);
    void flush();
    /// Flushes, and returns the cause of the first failure, empty if there was none.
    std::string finish();

private:
    std::string pending;
    int error = 0;
};

/// Writes one line to the standard error, in one piece.
void print_error_line(std::string line);

} // namespace host

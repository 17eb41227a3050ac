#pragma once

#include <optional>
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

/// Shows `line` on the terminal behind the standard error until something else is printed or another status
/// is shown; an empty one removes it. Any thread may call it.
void show_status(const std::string& line);

// A process that works for another one prints through it, in pieces.

struct printed_piece {
    enum kind_of_piece : char { output = 'o', error = 'e', message = 'm' };
    kind_of_piece kind;
    std::string_view text;
};

/// From now on this process prints pieces to `descriptor`.
void print_to(int descriptor);
/// Prints a piece, or what another process has printed.
void print_piece(const printed_piece& piece);
/// Takes the first piece of what a process has printed; empty if it isn't complete.
std::optional<printed_piece> take_printed_piece(std::string_view& printed);

} // namespace host

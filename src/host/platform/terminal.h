#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace host {

/// Whether the user sees the standard error on a terminal.
bool errors_on_terminal();
/// Whether the user sees the standard output on a terminal.
bool output_on_terminal();
/// The number of columns of the terminal behind the standard error; 80 if it is unknown.
std::size_t terminal_width();
/// Prints `question` on the terminal and waits for a line. Returns the line; empty if there is no terminal or
/// its input has ended.
std::optional<std::string> ask_on_terminal(const std::string& question);

} // namespace host

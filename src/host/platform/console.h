#pragma once

#include <string>
#include <string_view>

namespace host {

/// The standard output, gathered and written in large pieces. When nobody reads it any more, what follows is
/// dropped without a word; any other failure is kept for `finish`.
class console {
public:
    console();
    console(const console&) = delete;
    console& operator=(const console&) = delete;
    ~console();

    void print(std::string_view text);
    void flush();
    /// Flushes, and gives the cause of the first failure, empty if there was none.
    std::string finish();

private:
    std::string pending;
    int error = 0;
};

/// Writes one line to the standard error, whole.
void complain(std::string line);

} // namespace host

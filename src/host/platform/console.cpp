#include "host/platform/console.h"

#include "host/platform/file_descriptor.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t enough = 32768;

/// Returns the error number, 0 if all went out.
int write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const auto went = write(descriptor, text.data(), text.size());
        if (went >= 0)
            text.remove_prefix(static_cast<std::size_t>(went));
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace

console::console() {
    // Neither a reader that leaves nor a limit on file sizes may end an expansion halfway without a word.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

console::~console() {
    flush();
}

void console::print(std::string_view text) {
    pending += text;
    if (pending.size() >= enough)
        flush();
}

void console::flush() {
    if (error == 0)
        error = write_all(STDOUT_FILENO, pending);
    pending.clear();
}

std::string console::finish() {
    flush();
    return error == 0 || error == EPIPE ? std::string() : error_text(error);
}

void complain(std::string line) {
    line += '\n';
    write_all(STDERR_FILENO, line);
}

} // namespace host

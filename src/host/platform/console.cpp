#include "host/platform/console.h"

#include "host/platform/file_descriptor.h"
#include "host/platform/system_error.h"

#include <cerrno>
#include <csignal>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t flush_size = 32768;

} // namespace

console::console() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

console::~console() {
    flush();
}

void console::print(std::string_view text) {
    pending += text;
    if (pending.size() >= flush_size)
        flush();
}

void console::flush() {
    if (error == 0)
        error = write_all(STDOUT_FILENO, pending).error;
    pending.clear();
}

std::string console::finish() {
    flush();
    return error == 0 || error == EPIPE ? std::string() : error_text(error);
}

void print_error_line(std::string line) {
    line += '\n';
    write_all(STDERR_FILENO, line);
}

} // namespace host

#include "host/platform/terminal.h"

#include "harbor6/posix/file_descriptor.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace host {

bool errors_on_terminal() {
    return isatty(STDERR_FILENO) == 1;
}

bool output_on_terminal() {
    return isatty(STDOUT_FILENO) == 1;
}

std::size_t terminal_width() {
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

std::optional<std::string> ask_on_terminal(const std::string& question) {
    if (!errors_on_terminal())
        return std::nullopt;
    // The standard input may be an archive.
    const file_descriptor terminal(open("/dev/tty", O_RDWR | O_CLOEXEC));
    if (!terminal || write_all(terminal.get(), question).error != 0)
        return std::nullopt;
    std::string line;
    for (char next = 0; read_some(terminal.get(), &next, 1) == 1;) {
        if (next == '\n')
            return line;
        line += next;
    }
    write_all(terminal.get(), "\n");
    return std::nullopt;
}

} // namespace host

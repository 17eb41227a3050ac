#include "host/platform/console.h"

#include "harbor6/posix/file_descriptor.h"
#include "harbor6/posix/system_error.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t flush_size = 32768;
constexpr char erase_line[] = "\r\x1b[K";

int relay = -1; ///< where this process prints pieces, if it works for another one

std::mutex status_mutex;
bool status_shown = false; ///< under the mutex

/// Removes the status from the terminal before something else is printed. Under the mutex.
void hide_status() {
    if (status_shown)
        write_all(STDERR_FILENO, erase_line);
    status_shown = false;
}

/// Returns the error number.
int write_piece(printed_piece::kind_of_piece kind, std::string_view text) {
    const std::lock_guard lock(status_mutex);
    hide_status();
    if (relay < 0)
        return write_all(kind == printed_piece::output ? STDOUT_FILENO : STDERR_FILENO, text).error;
    const auto length = static_cast<std::uint32_t>(text.size());
    std::string piece(1 + sizeof length, kind);
    std::memcpy(piece.data() + 1, &length, sizeof length);
    piece += text;
    return write_all(relay, piece).error;
}

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
    if (error == 0 && !pending.empty())
        error = write_piece(printed_piece::output, pending);
    pending.clear();
}

std::string console::finish() {
    flush();
    return error == 0 || error == EPIPE ? std::string() : error_text(error);
}

void print_error_line(std::string line) {
    line += '\n';
    write_piece(printed_piece::error, line);
}

void show_status(const std::string& line) {
    const std::lock_guard lock(status_mutex);
    if (line.empty())
        return hide_status();
    write_all(STDERR_FILENO, '\r' + line + "\x1b[K");
    status_shown = true;
}

void print_to(int descriptor) {
    relay = descriptor;
}

void print_piece(const printed_piece& piece) {
    write_piece(piece.kind, piece.text);
}

std::optional<printed_piece> take_printed_piece(std::string_view& printed) {
    std::uint32_t length = 0;
    if (printed.size() < 1 + sizeof length)
        return std::nullopt;
    std::memcpy(&length, printed.data() + 1, sizeof length);
    const auto head = 1 + sizeof length;
    if (printed.size() - head < length)
        return std::nullopt;
    const printed_piece piece{static_cast<printed_piece::kind_of_piece>(printed.front()),
                              printed.substr(head, length)};
    printed.remove_prefix(head + length);
    return piece;
}

} // namespace host

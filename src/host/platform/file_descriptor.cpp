#include "host/platform/file_descriptor.h"

#include "harbor6/groundwork/text.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace host {

file_descriptor::file_descriptor(file_descriptor&& other) noexcept
    : number(std::exchange(other.number, -1)) {}

file_descriptor& file_descriptor::operator=(file_descriptor&& other) noexcept {
    if (this != &other) {
        close();
        number = std::exchange(other.number, -1);
    }
    return *this;
}

file_descriptor::~file_descriptor() {
    close();
}

int file_descriptor::close() {
    const int closing = std::exchange(number, -1);
    return closing < 0 || ::close(closing) == 0 ? 0 : errno;
}

void throw_system_error(const std::string& action, const std::string& name, int error) {
    const auto text = "cannot " + action + " " + nio::printable(name) + ": " + error_text(error);
    switch (error) {
    case EEXIST:
    case EILSEQ:
    case EINVAL:
    case EISDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case ENOENT:
    case ENOTDIR:
    case ENOTEMPTY:
    case ENXIO:
        throw path_error(text, "host::throw_system_error");
    default:
        throw fs::Exception(text, "host::throw_system_error");
    }
}

std::string error_text(int error) {
    return std::generic_category().message(error);
}

} // namespace host

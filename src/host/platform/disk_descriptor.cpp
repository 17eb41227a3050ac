#include "host/platform/disk_descriptor.h"

#include "harbor6/groundwork/text.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace host {

disk_descriptor::disk_descriptor(disk_descriptor&& other) noexcept
    : number(std::exchange(other.number, -1)) {}

disk_descriptor& disk_descriptor::operator=(disk_descriptor&& other) noexcept {
    if (this != &other) {
        close();
        number = std::exchange(other.number, -1);
    }
    return *this;
}

disk_descriptor::~disk_descriptor() {
    close();
}

int disk_descriptor::close() {
    const int closing = std::exchange(number, -1);
    return closing < 0 || ::close(closing) == 0 ? 0 : errno;
}

void fail_on_disk(const std::string& action, const std::string& name, int error) {
    const auto text = "cannot " + action + " " + nio::printable(name) + ": " + disk_cause(error);
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
        throw disk_obstacle(text, "host::fail_on_disk");
    default:
        throw fs::Exception(text, "host::fail_on_disk");
    }
}

std::string disk_cause(int error) {
    return std::generic_category().message(error);
}

} // namespace host

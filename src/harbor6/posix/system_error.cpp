#include "harbor6/posix/system_error.h"

#include "harbor6/groundwork/text.h"

#include <cerrno>
#include <system_error>

namespace host {

void throw_system_error(const std::string& action, const std::string& path, int error) {
    const auto text = "cannot " + action + " " + nio::printable(path) + ": " + error_text(error);
    switch (error) {
    case EACCES:
    case EEXIST:
    case EFBIG:
    case EILSEQ:
    case EINVAL:
    case EISDIR:
    case ELOOP:
    case ENAMETOOLONG:
    case ENOENT:
    case ENOTDIR:
    case ENOTEMPTY:
    case ENXIO:
    case EPERM:
    case EROFS:
        throw path_error(text, "host::throw_system_error");
    default:
        throw fs::Exception(text, "host::throw_system_error");
    }
}

std::string error_text(int error) {
    return std::generic_category().message(error);
}

} // namespace host

#include "harbor6/posix/file_descriptor.h"

#include <cerrno>
#include <unistd.h>

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

namespace {

template<class Call>
ssize_t repeat_if_interrupted(Call call) {
    ssize_t result;
    do
        result = call();
    while (result < 0 && errno == EINTR);
    return result;
}

} // namespace

std::ptrdiff_t read_some(int descriptor, char* buffer, std::size_t length,
                         std::optional<std::uint64_t> offset) {
    return repeat_if_interrupted([&] {
        return offset ? pread(descriptor, buffer, length, static_cast<off_t>(*offset))
                      : read(descriptor, buffer, length);
    });
}

write_result write_all(int descriptor, std::string_view bytes, std::optional<std::uint64_t> offset) {
    write_result result;
    while (result.written < bytes.size()) {
        const auto rest = bytes.substr(result.written);
        const auto count = repeat_if_interrupted([&] {
            return offset ? pwrite(descriptor, rest.data(), rest.size(),
                                   static_cast<off_t>(*offset + result.written))
                          : write(descriptor, rest.data(), rest.size());
        });
        if (count <= 0) {
            result.error = count < 0 ? errno : ENOSPC;
            break;
        }
        result.written += static_cast<std::size_t>(count);
    }
    return result;
}

} // namespace host

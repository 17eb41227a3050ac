#include "harbor6/posix/random_file.h"

#include "harbor6/posix/system_error.h"

#include <algorithm>
#include <cerrno>
#include <sys/stat.h>

namespace host {

random_file_input::random_file_input(file_descriptor opened, std::string file_name)
    : source(std::move(opened)), name(std::move(file_name)) {}

bool random_file_input::seek(std::uint64_t value) {
    if (value > size())
        return false;
    place = value;
    return true;
}

std::uint64_t random_file_input::size() const {
    struct stat status = {};
    if (fstat(source.get(), &status) != 0)
        throw_system_error("read", name, errno);
    return static_cast<std::uint64_t>(status.st_size);
}

unsigned random_file_input::_read(char* buffer, unsigned length) {
    unsigned done = 0;
    while (done < length) {
        const auto came = read_some(source.get(), buffer + done, length - done, place);
        if (came < 0)
            throw_system_error("read", name, errno);
        if (came == 0)
            break;
        done += static_cast<unsigned>(came);
        place += static_cast<std::uint64_t>(came);
    }
    return done;
}

int random_file_input::_read() {
    char byte;
    return _read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
}

random_file_output::random_file_output(std::shared_ptr<file_writer> writer) : file(std::move(writer)) {}

random_file_output::~random_file_output() {
    file->release(false);
}

void random_file_output::write(const char* buffer, unsigned length) {
    file->write_at(place, {buffer, length});
    place += length;
    extent = std::max(extent, place);
}

void random_file_output::write(char byte) {
    write(&byte, 1);
}

bool random_file_output::seek(std::uint64_t value) {
    if (value > extent)
        return false;
    place = value;
    return true;
}

void random_file_output::resize(std::uint64_t size) {
    file->resize(size);
    extent = size;
    place = std::min(place, extent);
}

} // namespace host

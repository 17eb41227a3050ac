#include "harbor6/posix/file_input.h"

#include "harbor6/posix/system_error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

constexpr std::uint64_t ring_size = 512 * 1024;
constexpr std::uint64_t chunk = 64 * 1024;
constexpr std::uint64_t history = 256 * 1024;
// A refill happens when all was delivered and overwrites the oldest chunk.
static_assert(ring_size - chunk >= history && (ring_size & (ring_size - 1)) == 0 && ring_size % chunk == 0);

} // namespace

file_input::file_input(file_descriptor opened, std::string input_name, std::uint64_t offset)
    : source(std::move(opened)), name(std::move(input_name)) {
    struct stat status = {};
    regular = fstat(source.get(), &status) == 0 && S_ISREG(status.st_mode);
    if (regular)
        posix_fadvise(source.get(), 0, 0, POSIX_FADV_SEQUENTIAL); // a larger read-ahead
    const auto start = regular ? lseek(source.get(), 0, SEEK_CUR) : 0;
    origin = (start > 0 ? static_cast<std::uint64_t>(start) : 0) + (regular ? offset : 0);
}

std::uint64_t file_input::oldest() const {
    return filled - begun > ring_size ? filled - ring_size : begun;
}

bool file_input::refill() {
    if (!ring)
        ring = std::make_unique_for_overwrite<char[]>(ring_size);
    const auto at = filled & (ring_size - 1);
    const auto room = static_cast<std::size_t>(std::min(chunk, ring_size - at));
    const auto came = read_some(source.get(), ring.get() + at, room,
                                regular ? std::optional(origin + filled) : std::nullopt);
    if (came < 0)
        throw_system_error("read", name, errno);
    filled += static_cast<std::uint64_t>(came);
    return came > 0;
}

unsigned file_input::_read(char* buffer, unsigned length) {
    unsigned done = 0;
    while (done < length) {
        if (place == filled && !refill()) {
            short_read = true;
            return done;
        }
        const auto at = place & (ring_size - 1);
        const auto count = std::min({filled - place, ring_size - at, std::uint64_t{length - done}});
        std::memcpy(buffer + done, ring.get() + at, count);
        done += static_cast<unsigned>(count);
        place += count;
    }
    short_read = short_read && length == 0;
    return done;
}

int file_input::_read() {
    short_read = place == filled && !refill();
    return short_read ? -1 : static_cast<unsigned char>(ring[place++ & (ring_size - 1)]);
}

std::uint64_t file_input::_skip(std::uint64_t count) {
    const auto start = place;
    if (regular && count > filled - place + chunk) {
        // Jump over all but the last chunk, which the loop below reads to find the end.
        const auto end = size();
        if (end > place + chunk)
            restart_at(std::min(place + count, end) - chunk);
    }
    while (place - start < count) {
        if (place == filled && !refill()) {
            short_read = true;
            return place - start;
        }
        place += std::min(filled - place, count - (place - start));
    }
    short_read = short_read && count == 0;
    return count;
}

void file_input::restart_at(std::uint64_t value) {
    begun = filled = place = value;
}

void file_input::release_memory() {
    if (!regular)
        return;
    restart_at(place);
    ring.reset();
}

void file_input::step_back(std::uint64_t count) {
    if (short_read)
        throw cut_short();
    if (count > place || !seek(place - count))
        throw stream::exception("bytes pushed back that were not delivered", "host::file_input");
}

void file_input::unread(const char* /*bytes*/, unsigned length) {
    step_back(length);
}

void file_input::unread(char /*byte*/) {
    step_back(1);
}

bool file_input::seek(std::uint64_t value) {
    if (value >= oldest() && value <= filled)
        place = value;
    else if (regular && value <= size())
        restart_at(value);
    else
        return false;
    short_read = false;
    return true;
}

std::uint64_t file_input::size() const {
    struct stat status = {};
    if (!regular || fstat(source.get(), &status) != 0)
        return ~std::uint64_t{0};
    return static_cast<std::uint64_t>(status.st_size) -
           std::min(origin, static_cast<std::uint64_t>(status.st_size));
}

stream::cut_short file_input::cut_short() const {
    return {origin + filled, "host::file_input"};
}

file_descriptor file_input::duplicate() const {
    return file_descriptor(regular && origin == 0 ? fcntl(source.get(), F_DUPFD_CLOEXEC, 3) : -1);
}

file_descriptor open_input(const std::string& path) {
    // Without O_NONBLOCK opening a named pipe waits for its writer.
    file_descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file)
        throw fs::Exception(error_text(errno), "host::open_input");
    struct stat status = {};
    if (fstat(file.get(), &status) == 0 && S_ISDIR(status.st_mode))
        throw fs::Exception(error_text(EISDIR), "host::open_input");
    return file;
}

file_descriptor duplicate_descriptor(int descriptor) {
    file_descriptor file(fcntl(descriptor, F_DUPFD_CLOEXEC, 3));
    if (!file)
        throw fs::Exception(error_text(errno), "host::duplicate_descriptor");
    return file;
}

file_descriptor open_standard_input() {
    return duplicate_descriptor(STDIN_FILENO);
}

} // namespace host

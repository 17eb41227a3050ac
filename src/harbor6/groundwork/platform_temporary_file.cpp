#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/platform.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

constexpr int owner_only = 0600;

/// For file systems that don't create nameless files: the name exists for a moment. -1 with errno on failure.
int create_and_unlink(const std::string& folder) {
    // Names like those of files that aren't complete (posix/temporary_files.h), so that one that a kill
    // leaves is removed, but not the same numbers.
    static std::atomic<unsigned> next{3'000'000'000};
    const auto prefix = folder + "/.harbor-" + std::to_string(getpid()) + "-";
    for (;;) {
        const auto path = prefix + std::to_string(next++);
        const int opened = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, owner_only);
        if (opened >= 0)
            unlink(path.c_str());
        if (opened >= 0 || errno != EEXIST)
            return opened;
    }
}

/// Repeats `transfer(done)`, which moves bytes from the one at `done` on, until `length` bytes are moved.
/// Returns 0 or the error.
template<class Transfer>
int transfer_all(std::size_t length, Transfer transfer) {
    for (std::size_t done = 0; done < length;) {
        const auto count = transfer(done);
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (count == 0)
            return EIO;
        else if (errno != EINTR)
            return errno;
    }
    return 0;
}

} // namespace

temporary_file::temporary_file(const std::string& place)
    : folder(place), descriptor(open(place.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, owner_only)) {
    if (descriptor < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL))
        descriptor = create_and_unlink(folder);
    if (descriptor < 0)
        fail("create", errno);
}

temporary_file::temporary_file(temporary_file&& other) noexcept
    : folder(std::move(other.folder)), descriptor(std::exchange(other.descriptor, -1)) {}

temporary_file& temporary_file::operator=(temporary_file&& other) noexcept {
    std::swap(folder, other.folder);
    std::swap(descriptor, other.descriptor);
    return *this;
}

temporary_file::~temporary_file() {
    if (descriptor >= 0)
        close(descriptor);
}

void temporary_file::write(std::uint64_t offset, const char* bytes, std::size_t length) {
    const int error = transfer_all(length, [&](std::size_t done) {
        return pwrite(descriptor, bytes + done, length - done, static_cast<off_t>(offset + done));
    });
    if (error != 0)
        fail("write", error);
}

void temporary_file::read(std::uint64_t offset, char* buffer, std::size_t length) const {
    const int error = transfer_all(length, [&](std::size_t done) {
        return pread(descriptor, buffer + done, length - done, static_cast<off_t>(offset + done));
    });
    if (error != 0)
        fail("read", error);
}

void temporary_file::fail(const char* operation, int error) const {
    throw fs::Exception(std::string("cannot ") + operation + " a temporary file in " + folder + ": " +
                            std::strerror(error),
                        "platform::temporary_file");
}

} // namespace platform

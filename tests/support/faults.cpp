#include "support/faults.h"

#include "harbor6/groundwork/export.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace support::faults {

bool can_keep_others = true;
unsigned synced_files = 0;
unsigned synced_folders = 0;

namespace {

std::atomic<call> armed = call::none;
std::atomic<int> left = 0; ///< calls up to the one that fails, which leaves 0
int failure = 0;
bool fails_on = false;

/// Counts the call. Returns whether it fails, with errno set.
bool fails(call which) {
    if (armed != which || --left > 0 || (left < 0 && !fails_on))
        return false;
    errno = failure;
    return true;
}

template<class... Arguments>
long pass(call which, long number, Arguments... arguments) {
    return fails(which) ? -1 : syscall(number, arguments...);
}

} // namespace

void arm(call which, unsigned nth, int error, bool stays) {
    left = static_cast<int>(nth);
    failure = error;
    fails_on = stays;
    armed = which;
}

bool disarm() {
    armed = call::none;
    return left <= 0;
}

} // namespace support::faults

using support::faults::call;
using support::faults::fails;
using support::faults::pass;

extern "C" {

HARBOR6_API int openat(int folder, const char* name, int flags, ...) {
    std::va_list more;
    va_start(more, flags);
    const bool creates = flags & O_CREAT || (flags & O_TMPFILE) == O_TMPFILE;
    const auto mode = creates ? va_arg(more, mode_t) : mode_t{0};
    va_end(more);
    return static_cast<int>(pass(creates ? call::create : call::open, SYS_openat, folder, name, flags, mode));
}
HARBOR6_API int mkdirat(int folder, const char* name, mode_t mode) noexcept {
    return static_cast<int>(pass(call::mkdir, SYS_mkdirat, folder, name, mode));
}
HARBOR6_API ssize_t read(int descriptor, void* buffer, std::size_t length) {
    return pass(call::read, SYS_read, descriptor, buffer, length);
}
HARBOR6_API ssize_t write(int descriptor, const void* buffer, std::size_t length) {
    return pass(call::write, SYS_write, descriptor, buffer, length);
}
HARBOR6_API ssize_t pwrite(int descriptor, const void* buffer, std::size_t length, off_t offset) {
    return pass(call::write, SYS_pwrite64, descriptor, buffer, length, offset);
}
HARBOR6_API int linkat(int from, const char* old, int to, const char* name, int flags) noexcept {
    return static_cast<int>(pass(call::link, SYS_linkat, from, old, to, name, flags));
}
HARBOR6_API int renameat(int from, const char* old, int to, const char* name) noexcept {
    return static_cast<int>(pass(call::rename, SYS_renameat2, from, old, to, name, 0));
}
HARBOR6_API int renameat2(int from, const char* old, int to, const char* name, unsigned flags) noexcept {
    if (flags == 0 || support::faults::can_keep_others)
        return static_cast<int>(pass(call::rename, SYS_renameat2, from, old, to, name, flags));
    errno = EINVAL;
    return -1;
}
HARBOR6_API int futimens(int descriptor, const timespec times[2]) noexcept {
    return static_cast<int>(pass(call::time, SYS_utimensat, descriptor, nullptr, times, 0));
}
HARBOR6_API int fsync(int descriptor) {
    struct stat status = {};
    fstat(descriptor, &status);
    ++(S_ISDIR(status.st_mode) ? support::faults::synced_folders : support::faults::synced_files);
    return static_cast<int>(pass(call::sync, SYS_fsync, descriptor));
}
HARBOR6_API int close(int descriptor) {
    const long result = syscall(SYS_close, descriptor); // done even if that is said to have failed
    return fails(call::close) ? -1 : static_cast<int>(result);
}
}

HARBOR6_API void* operator new(std::size_t size) {
    if (!fails(call::allocate))
        if (void* const memory = std::malloc(size ? size : 1))
            return memory;
    throw std::bad_alloc();
}
HARBOR6_API void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return fails(call::allocate) ? nullptr : std::malloc(size ? size : 1);
}
HARBOR6_API void operator delete(void* memory) noexcept {
    std::free(memory);
}
HARBOR6_API void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

#include "host/platform/plug_in_file.h"

#include "host/platform/file_descriptor.h"
#include "host/platform/system_error.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <vector>

namespace host {

namespace {

constexpr char not_a_library[] = "not a shared library";
constexpr char cut_short[] = "the file is cut short";

/// Fills `length` bytes from the file's byte `offset` on. False if the file ends earlier or can't be read.
bool read_at(const file_descriptor& file, std::uint64_t offset, void* into, std::size_t length) {
    return read_some(file.get(), static_cast<char*>(into), length, offset) ==
           static_cast<std::ptrdiff_t>(length);
}

/// Whether `length` bytes from `offset` on are within a file of `size` bytes.
bool within(std::uint64_t size, std::uint64_t offset, std::uint64_t length) {
    return offset <= size && length <= size - offset;
}

} // namespace

std::string plug_in_fault(const std::string& path) {
    const file_descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file || fstat(file.get(), &status) != 0)
        return error_text(errno);
    if (S_ISDIR(status.st_mode))
        return error_text(EISDIR);
    if (!S_ISREG(status.st_mode))
        return "not a regular file";
    const auto size = static_cast<std::uint64_t>(status.st_size);
    ElfW(Ehdr) header;
    if (size < sizeof header || !read_at(file, 0, &header, sizeof header) ||
        std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_phentsize != sizeof(ElfW(Phdr)))
        return not_a_library;
    std::vector<ElfW(Phdr)> segments(header.e_phnum);
    const auto length = segments.size() * sizeof(ElfW(Phdr));
    if (!within(size, header.e_phoff, length) || !read_at(file, header.e_phoff, segments.data(), length))
        return cut_short;
    for (const auto& segment : segments)
        if (!within(size, segment.p_offset, segment.p_filesz))
            return cut_short;
    return {};
}

} // namespace host

#include "harbor6/posix/plug_in_file.h"

#include "harbor6/posix/file_descriptor.h"
#include "harbor6/posix/system_error.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <vector>

namespace host {

namespace {

constexpr char not_a_library[] = "not a shared library";
constexpr std::size_t longest_name = 255;
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

/// The text at the file's byte `offset`, `most` bytes at most.
std::string text_at(const file_descriptor& file, std::uint64_t offset, std::size_t most) {
    std::string text(most, '\0');
    const auto came = read_some(file.get(), text.data(), most, offset);
    text.resize(came < 0 ? 0 : std::min(static_cast<std::size_t>(came), text.find('\0')));
    return text;
}

/// The file's byte that is loaded to the address `address`.
std::uint64_t offset_of(const std::vector<ElfW(Phdr)>& segments, std::uint64_t address) {
    for (const auto& segment : segments)
        if (segment.p_type == PT_LOAD && address - segment.p_vaddr < segment.p_filesz)
            return segment.p_offset + (address - segment.p_vaddr);
    return ~std::uint64_t{0};
}

/// The names of the libraries that the file needs.
std::vector<std::string> needed(const file_descriptor& file, const std::vector<ElfW(Phdr)>& segments) {
    std::uint64_t names = 0;
    std::vector<std::uint64_t> needs;
    for (const auto& segment : segments) {
        if (segment.p_type != PT_DYNAMIC)
            continue;
        ElfW(Dyn) entry;
        for (std::uint64_t at = 0; within(segment.p_filesz, at, sizeof entry); at += sizeof entry) {
            if (!read_at(file, segment.p_offset + at, &entry, sizeof entry) || entry.d_tag == DT_NULL)
                break;
            if (entry.d_tag == DT_STRTAB)
                names = offset_of(segments, entry.d_un.d_ptr);
            else if (entry.d_tag == DT_NEEDED)
                needs.push_back(entry.d_un.d_val);
        }
    }
    std::vector<std::string> libraries;
    for (const auto each : needs)
        libraries.push_back(text_at(file, names + each, longest_name));
    return libraries;
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
    const std::string library = "libharbor6.so.";
    for (const auto& name : needed(file, segments))
        if (name.starts_with(library) && name != library + HARBOR6_INTERFACE)
            return "built for version " + name.substr(library.size()) +
                   " of the interface of libharbor6; this one has version " HARBOR6_INTERFACE;
    return {};
}

} // namespace host

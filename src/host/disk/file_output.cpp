#include "host/disk/file_output.h"

#include <cstring>
#include <utility>

namespace host {

namespace {

constexpr unsigned buffer_size = 65536;
constexpr unsigned large = 16384; ///< from here on copying costs more than the call

} // namespace

file_output::file_output(std::shared_ptr<file_writer> writer, std::shared_ptr<arrival> shared_data)
    : file(std::move(writer)), data(std::move(shared_data)) {}

file_output::~file_output() {
    try {
        flush();
    } catch (const un::exception&) {
        // The writer keeps the failure, and the file reports it when it ends.
    }
}

void file_output::write(const char* buffer, unsigned length) {
    if (length >= large || length > buffer_size - pending) {
        flush();
        if (length >= large) {
            file->write({buffer, length});
            return;
        }
    }
    if (!buffered)
        buffered = std::make_unique_for_overwrite<char[]>(buffer_size);
    std::memcpy(buffered.get() + pending, buffer, length);
    pending += length;
}

void file_output::write(char byte) {
    write(&byte, 1);
}

std::uint64_t file_output::tell() const {
    return file->size() + pending;
}

void file_output::flush() {
    if (pending > 0)
        file->write({buffered.get(), std::exchange(pending, 0)});
}

void file_output::segment_begins(std::uint64_t size) {
    data->expect(size);
}

} // namespace host

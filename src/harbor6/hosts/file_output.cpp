#include "harbor6/hosts/file_output.h"

#include <cstring>
#include <utility>

namespace host {

namespace {

constexpr unsigned buffer_size = 65536;
constexpr unsigned large_write = 16384; ///< from here on copying costs more than the call

} // namespace

file_output::file_output(std::shared_ptr<file_writer> writer, std::shared_ptr<arrival> shared_data,
                         write_behind* shared_behind)
    : file(std::move(writer)), data(std::move(shared_data)), behind(shared_behind) {}

file_output::~file_output() {
    flush();
    data->set_received(file->size());
    file->release(file->failure().empty() && data->is_sized() && data->complete());
}

void file_output::pass_on(std::string_view bytes) {
    if (!file->failure().empty())
        return;
    try {
        file->write(bytes);
    } catch (const fs::Exception&) {
        // The writer keeps the failure, and the file reports it when it ends.
    }
}

void file_output::write(const char* buffer, unsigned length) {
    if (large)
        return behind->write(file, {buffer, length});
    if (length >= large_write || length > buffer_size - pending) {
        flush();
        if (length >= large_write) {
            pass_on({buffer, length});
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
    if (large)
        behind->settle();
    return file->size() + pending;
}

void file_output::flush() {
    if (large)
        behind->settle();
    if (pending > 0)
        pass_on({buffered.get(), std::exchange(pending, 0)});
}

void file_output::segment_begins(std::uint64_t size) {
    data->expect(size);
    large = behind != nullptr && pending == 0 && size >= write_behind::smallest_file;
}

} // namespace host

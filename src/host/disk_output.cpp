#include "host/disk_output.h"

#include <cstring>
#include <utility>

namespace host {

namespace {

constexpr unsigned buffer_size = 65536;
constexpr unsigned large = 16384; ///< from here on copying costs more than the call

} // namespace

disk_output::disk_output(std::shared_ptr<disk_transfer> file) : transfer(std::move(file)) {}

disk_output::~disk_output() {
    try {
        flush();
    } catch (const un::exception&) {
        // The transfer is marked as failed, and its owner reports it.
    }
}

void disk_output::write(const char* buffer, unsigned length) {
    if (length >= large || length > buffer_size - pending) {
        flush();
        if (length >= large) {
            transfer->write(buffer, length);
            return;
        }
    }
    if (!gathered)
        gathered = std::make_unique_for_overwrite<char[]>(buffer_size);
    std::memcpy(gathered.get() + pending, buffer, length);
    pending += length;
}

void disk_output::write(char byte) {
    write(&byte, 1);
}

std::uint64_t disk_output::tell() const {
    return transfer->watch.counted() + pending;
}

void disk_output::flush() {
    if (pending > 0)
        transfer->write(gathered.get(), std::exchange(pending, 0));
}

void disk_output::segment_begins(std::uint64_t size) {
    transfer->watch.expect(size);
}

} // namespace host

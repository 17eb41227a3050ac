#include "harbor6/stream/multi_output.h"

#include <algorithm>

namespace stream {

multi_output::multi_output() : filter_output(nullptr) {}

multi_output::~multi_output() = default;

segment_listener::~segment_listener() = default;

void segment_listener::segment_failed() {}

void multi_output::write(const char* buffer, unsigned length) {
    if (length == 0)
        return;
    while (output* const segment = attached()) {
        const auto room = segment_size - write_state;
        if (room == 0) {
            write_state = 0;
            next();
            continue;
        }
        if (length == 0)
            return;
        const auto count = static_cast<unsigned>(std::min<std::uint64_t>(room, length));
        segment->write(buffer, count);
        buffer += count;
        length -= count;
        written += count;
        write_state += count;
    }
    written += length;
}

void multi_output::write(char byte) {
    write(&byte, 1);
}

std::uint64_t multi_output::tell() const {
    return written;
}

std::uint64_t multi_output::size() const {
    return ~std::uint64_t{0};
}

void multi_output::attach(output* target) {
    filter_output::attach(target);
    if (auto* const listener = dynamic_cast<segment_listener*>(target))
        listener->segment_begins(segment_size);
}

void multi_output::next() {
    attach(nullptr);
}

} // namespace stream

#include "stream/nio_output.h"

namespace nio {

output::~output() = default;

void output::start() {}

void output::finish() {}

void output::put(char byte) {
    write(&byte, 1);
}

void output::flush() {}

void output::set_tell(std::uint64_t value) {
    position = value;
}

std::uint64_t output::tell() const {
    return position;
}

bool output::seek(std::uint64_t /*value*/) {
    return false;
}

std::uint64_t output::size() const {
    return position;
}

} // namespace nio

#include "stream/nio_input.h"

namespace nio {

input::~input() = default;

void input::start() {}

void input::finish() {}

void input::abort() {}

int input::get() {
    char byte;
    return read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
}

void input::set_tell(std::uint64_t value) {
    position = value;
}

std::uint64_t input::tell() const {
    return position;
}

bool input::seek(std::uint64_t /*value*/) {
    return false;
}

std::uint64_t input::size() const {
    return ~std::uint64_t{0};
}

} // namespace nio

#include "concurrency/filter_input.h"

namespace nio {

filter_input::filter_input(input* source) {
    filter_input::attach(source);
}

filter_input::~filter_input() = default;

unsigned filter_input::read(char* buffer, unsigned length) {
    const unsigned came = attached()->read(buffer, length);
    position += came;
    return came;
}

void filter_input::attach(input* source) {
    inner = source;
    if (source)
        position = source->tell();
}

input* filter_input::attached() const {
    return inner;
}

direct_input::direct_input(input* source) : filter_input(source) {}

direct_input::~direct_input() = default;

void direct_input::start() {
    position = attached()->tell();
}

bool direct_input::seek(std::uint64_t value) {
    const bool moved = attached()->seek(value);
    if (moved)
        position = value;
    return moved;
}

std::uint64_t direct_input::size() const {
    return attached()->size();
}

} // namespace nio

#include "stream/infinite_output.h"

#include "stream/input.h"

namespace stream {

infinite_output::~infinite_output() = default;

void infinite_output::write(const char* /*buffer*/, unsigned length) {
    position += length;
}

std::uint64_t infinite_output::tell() const {
    return position;
}

void infinite_output::write(char /*byte*/) {
    ++position;
}

void infinite_output::copy_from(input& source) {
    position += source.skip(~std::uint64_t{0});
}

void infinite_output::resize(std::uint64_t size) {
    position = size;
}

} // namespace stream

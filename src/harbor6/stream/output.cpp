#include "harbor6/stream/output.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"

namespace stream {

output::~output() = default;

void output::write(const char* buffer, unsigned length) {
    for (unsigned i = 0; i < length; ++i)
        write(buffer[i]);
}

bool output::seek(std::uint64_t value) {
    return value == tell();
}

void output::flush() {}

std::uint64_t output::size() const {
    return tell();
}

void output::write(const std::string& text) {
    write(text.data(), static_cast<unsigned>(text.size()));
}

void output::copy_from(input& source) {
    source.copy_to(*this);
}

void output::resize(std::uint64_t /*size*/) {
    throw un::implemented("stream::output::resize");
}

void output::sync() {
    flush();
}

void output::close() {
    flush();
}

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

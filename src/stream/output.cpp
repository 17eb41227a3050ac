#include "stream/output.h"

#include "outside/groundwork/exception.h"
#include "stream/input.h"

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

} // namespace stream

#include "harbor6/stream/digest.h"

namespace algorithm {

digest::~digest() = default;

void digest::prepare(std::uint64_t /*a*/, std::uint64_t /*b*/) {}

void digest::reset() {}

void digest::finish() {}

digest_input::digest_input(stream::input* source, algorithm::digest* fed)
    : filter_input(source), digest(fed) {}

digest_input::~digest_input() = default;

void digest_input::start() {
    digest->reset();
}

void digest_input::finish() {
    digest->finish();
}

unsigned digest_input::_read(char* buffer, unsigned length) {
    const auto got = filter_input::_read(buffer, length);
    digest->update(buffer, got);
    return got;
}

int digest_input::_read() {
    const int byte = filter_input::_read();
    if (byte != -1)
        digest->update(static_cast<char>(byte));
    return byte;
}

std::uint64_t digest_input::_skip(std::uint64_t count) {
    std::uint64_t done = 0;
    while (done < count && _read() != -1)
        ++done;
    return done;
}

} // namespace algorithm

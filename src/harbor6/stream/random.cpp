#include "harbor6/stream/random.h"

#include <algorithm>

namespace stream::random {

input::~input() {
    try {
        input::close();
    } catch (...) {
    }
}

void input::start() {}

void input::finish() {}

void input::unread(const char* /*bytes*/, unsigned length) {
    seek(tell() - length);
}

void input::unread(char /*byte*/) {
    seek(tell() - 1);
}

std::uint64_t input::skip(std::uint64_t count) {
    const auto here = tell();
    const auto passed = std::min(count, size() - std::min(here, size()));
    seek(here + passed);
    return passed;
}

void input::close() {}

output::~output() {
    try {
        output::flush();
        output::close();
    } catch (...) {
    }
}

void output::start() {}

void output::finish() {}

} // namespace stream::random

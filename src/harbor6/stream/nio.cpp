#include "harbor6/stream/nio.h"

#include <algorithm>
#include <vector>

namespace nio {

namespace {

/// Reads up to `limit` bytes piece by piece, passes each piece to `take`, and stops at the first read that
/// returns 0.
template<class Take>
std::uint64_t drain(input& source, std::uint64_t limit, unsigned chunk, Take take) {
    std::vector<char> piece(static_cast<std::size_t>(std::min<std::uint64_t>(limit, std::max(chunk, 1u))));
    std::uint64_t total = 0;
    while (total < limit) {
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(limit - total, piece.size()));
        const auto got = source.read(piece.data(), wanted);
        if (got == 0)
            break;
        take(piece.data(), got);
        total += got;
    }
    return total;
}

} // namespace

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

filter_input::filter_input(input* source) {
    filter_input::attach(source);
}

filter_input::~filter_input() = default;

unsigned filter_input::read(char* buffer, unsigned length) {
    const unsigned got = attached()->read(buffer, length);
    position += got;
    return got;
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

std::uint64_t copy(input& source, output& target, std::uint64_t limit, unsigned chunk) {
    return drain(source, limit, chunk,
                 [&](const char* bytes, unsigned length) { target.write(bytes, length); });
}

std::uint64_t skip(input& source, std::uint64_t count, unsigned chunk) {
    return drain(source, count, chunk, [](const char*, unsigned) {});
}

} // namespace nio

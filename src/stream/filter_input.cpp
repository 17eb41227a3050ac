#include "stream/filter_input.h"

#include "outside/groundwork/exception.h"

namespace stream {

filter_input::filter_input(input* wrapped_stream) : inner(wrapped_stream) {}

filter_input::~filter_input() = default;

input& filter_input::wrapped() const {
    if (!inner)
        throw exception("no stream is attached", "stream::filter_input");
    return *inner;
}

std::uint64_t filter_input::size() const {
    return wrapped().size();
}

void filter_input::close() {
    wrapped().close();
}

void filter_input::attach(input* stream) {
    inner = stream;
}

input* filter_input::attached() const {
    return inner;
}

unsigned filter_input::_read(char* buffer, unsigned length) {
    return wrapped().read(buffer, length);
}

int filter_input::_read() {
    return wrapped().read();
}

std::uint64_t filter_input::_skip(std::uint64_t count) {
    return wrapped().skip(count);
}

std::uint64_t filter_input::_tell() const {
    return wrapped().tell();
}

direct_input::direct_input(input* wrapped_stream) : filter_input(wrapped_stream) {}

direct_input::~direct_input() = default;

input& direct_input::receiver() const {
    if (!attached())
        throw exception("no stream is attached", "stream::direct_input");
    return *attached();
}

void direct_input::unread(const char* bytes, unsigned length) {
    receiver().unread(bytes, length);
}

void direct_input::unread(char byte) {
    receiver().unread(byte);
}

} // namespace stream

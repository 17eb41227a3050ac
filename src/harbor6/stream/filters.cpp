#include "harbor6/stream/filters.h"

#include "harbor6/groundwork/exception.h"

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

filter_output::filter_output(output* wrapped_stream) : inner(wrapped_stream) {}

filter_output::~filter_output() = default;

output& filter_output::wrapped() const {
    if (!inner)
        throw exception("no stream is attached", "stream::filter_output");
    return *inner;
}

void filter_output::write(const char* buffer, unsigned length) {
    wrapped().write(buffer, length);
}

std::uint64_t filter_output::tell() const {
    return wrapped().tell();
}

void filter_output::write(const std::string& text) {
    wrapped().write(text);
}

void filter_output::write(char byte) {
    wrapped().write(byte);
}

void filter_output::copy_from(input& source) {
    wrapped().copy_from(source);
}

void filter_output::resize(std::uint64_t size) {
    wrapped().resize(size);
}

void filter_output::sync() {
    flush();
    wrapped().sync();
}

void filter_output::close() {
    wrapped().close();
}

void filter_output::attach(output* stream) {
    inner = stream;
}

output* filter_output::attached() const {
    return inner;
}

} // namespace stream

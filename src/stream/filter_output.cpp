#include "stream/filter_output.h"

#include "outside/groundwork/exception.h"

namespace stream {

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

#include "harbor6/concurrency/transform_input.h"

#include "harbor6/stream/nio.h"

#include <utility>

namespace nio {

transform::transform(nio::input& source, nio::output& target) : input(&source), output(&target) {}

transform::~transform() = default;

void transform::run() {
    copy(*input, *output, ~std::uint64_t{0}, 65536);
}

transform_target::transform_target(nio::pipe& usual) : pipe(usual), receiver(&usual) {}

transform_target::~transform_target() = default;

void transform_target::divert(output* taker) {
    receiver = taker;
    count = 0;
    failure = nullptr;
}

std::uint64_t transform_target::taken() {
    if (failure)
        std::rethrow_exception(std::exchange(failure, nullptr));
    return count;
}

void transform_target::write(const char* buffer, unsigned length) {
    if (receiver == &pipe)
        return pipe.write(buffer, length);
    count += length;
    if (receiver == nullptr)
        return;
    try {
        receiver->write(buffer, length);
    } catch (...) {
        failure = std::current_exception();
        receiver = nullptr;
    }
}

void transform_target::finish() {
    pipe.finish();
}

} // namespace nio

#include "harbor6/concurrency/transform_input.h"

#include "harbor6/stream/nio.h"

namespace nio {

transform::transform(nio::input& source, nio::output& target) : input(&source), output(&target) {}

transform::~transform() = default;

void transform::run() {
    copy(*input, *output, ~std::uint64_t{0}, 65536);
}

} // namespace nio

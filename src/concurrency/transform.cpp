#include "concurrency/transform.h"

#include "stream/nio_copy.h"

namespace nio {

transform::transform(nio::input& source, nio::output& target) : input(&source), output(&target) {}

transform::~transform() = default;

void transform::run() {
    copy(*input, *output, ~std::uint64_t{0}, 65536);
}

} // namespace nio

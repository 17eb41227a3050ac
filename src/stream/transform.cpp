#include "stream/transform.h"

#include "outside/groundwork/exception.h"

namespace stream {

transform::~transform() = default;

void transform::begin() {}

void transform::end() {}

std::uint64_t transform::process(input& /*source*/, output& /*target*/, std::uint64_t /*length*/) {
    throw exception("partial stream processing is not implemented", "stream::transform");
}

std::uint64_t transform::process(input& /*source*/, output& /*target*/) {
    throw exception("full stream processing is not implemented", "stream::transform");
}

} // namespace stream

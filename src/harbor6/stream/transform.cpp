#include "harbor6/stream/transform.h"

#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

#include <algorithm>

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

copier::copier(unsigned buffer_size) : buffer(std::max(buffer_size, 1u)) {}

copier::~copier() = default;

std::uint64_t copier::process(input& source, output& target, std::uint64_t length) {
    std::uint64_t total = 0;
    while (total < length) {
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(length - total, buffer.size()));
        const auto got = source.read(buffer.data(), wanted);
        if (got > 0)
            target.write(buffer.data(), got);
        total += got;
        if (got < wanted)
            break;
    }
    return total;
}

std::uint64_t copier::process(input& source, output& target) {
    return process(source, target, ~std::uint64_t{0});
}

} // namespace stream

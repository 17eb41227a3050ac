#include "stream/copier.h"

#include "stream/input.h"
#include "stream/output.h"

#include <algorithm>

namespace stream {

copier::copier(unsigned buffer_size) : buffer(std::max(buffer_size, 1u)) {}

copier::~copier() = default;

std::uint64_t copier::process(input& source, output& target, std::uint64_t length) {
    std::uint64_t total = 0;
    while (total < length) {
        const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(length - total, buffer.size()));
        const auto came = source.read(buffer.data(), wanted);
        if (came > 0)
            target.write(buffer.data(), came);
        total += came;
        if (came < wanted)
            break;
    }
    return total;
}

std::uint64_t copier::process(input& source, output& target) {
    return process(source, target, ~std::uint64_t{0});
}

} // namespace stream

#include "concurrency/channel.h"

namespace nio {

channel::~channel() = default;

std::uint64_t channel::tell() const {
    return position;
}

bool channel::seek(std::uint64_t /*value*/) {
    return false;
}

std::uint64_t channel::size() const {
    return ~std::uint64_t{0};
}

} // namespace nio

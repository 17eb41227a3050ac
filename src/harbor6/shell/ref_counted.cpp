#include "harbor6/shell/ref_counted.h"

namespace pattern {

RefCounted::~RefCounted() = default;

void RefCounted::lastRef() const {}

void RefCounted::addReference() const {
    reference_count.fetch_add(1, std::memory_order_relaxed);
}

void RefCounted::release() {
    // What other threads did with their references happens before the object's end.
    const auto left = reference_count.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        destroy();
    else if (left == 1)
        lastRef();
}

std::uint32_t RefCounted::references() const {
    return reference_count.load(std::memory_order_relaxed);
}

} // namespace pattern

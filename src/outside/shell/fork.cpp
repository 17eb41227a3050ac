#include "outside/shell/fork.h"

namespace harbor6 {

Fork::~Fork() = default;

void Fork::forkHook(std::uint32_t /*x*/) {}

data::CountedInput Fork::input(bool /*expanding*/) const {
    return {};
}

data::random::CountedInput Fork::randomInput(bool /*expanding*/, bool /*shared*/) const {
    return {};
}

data::CountedOutput Fork::output(bool /*expanding*/) {
    return {};
}

data::random::CountedOutput Fork::randomOutput(bool /*expanding*/) {
    return {};
}

Transform& Fork::acquireExpansionTransform() const {
    pattern::AcquiredPtr<Transform> transform(new Transform);
    transform->setInput(input(true));
    return *transform.detach();
}

Transform* Fork::acquireCompressionTransform() {
    pattern::AcquiredPtr<Transform> transform(new Transform);
    transform->setOutput(output(true));
    return transform.detach();
}

} // namespace harbor6

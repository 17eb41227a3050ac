#include "harbor6/shell/fork.h"

namespace harbor6 {

Transform::~Transform() = default;

void Transform::destroy() {
    delete this;
}

void Transform::setInput(data::CountedInput& source) {
    input = source;
}

void Transform::setOutput(data::CountedOutput& target) {
    output = target;
}

void Transform::run() {
    input->copy_to(*output);
}

void Transform::finishRun() {
    if (output)
        output->close();
    input.reset();
    output.reset();
}

data::CountedOutput Transform::outputPort() {
    return output;
}

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
    auto bytes = input(true);
    transform->setInput(bytes);
    return *transform.detach();
}

Transform* Fork::acquireCompressionTransform() {
    pattern::AcquiredPtr<Transform> transform(new Transform);
    auto bytes = output(true);
    transform->setOutput(bytes);
    return transform.detach();
}

} // namespace harbor6

namespace harbor6::data {

OutputTransformer::OutputTransformer(const CountedOutput& port, Transform& carrier)
    : filter_output(&*port), target(port), transform(pattern::AcquiredPtr<Transform>::sharing(carrier)) {}

OutputTransformer::~OutputTransformer() {
    try {
        close();
    } catch (...) {
    }
}

void OutputTransformer::close() {}

void OutputTransformer::finish() {
    target->finish();
}

} // namespace harbor6::data

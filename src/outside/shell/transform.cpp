#include "outside/shell/transform.h"

namespace harbor6 {

Transform::~Transform() = default;

void Transform::destroy() {
    delete this;
}

void Transform::setInput(const data::CountedInput& source) {
    input = source;
}

void Transform::setOutput(const data::CountedOutput& target) {
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

} // namespace harbor6

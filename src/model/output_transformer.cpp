#include "model/output_transformer.h"

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

#pragma once

#include "outside/shell/transform.h"
#include "stream/filter_output.h"

namespace harbor6::data {

/// Writes through a transform's port, and keeps port and transform alive.
class HARBOR6_API OutputTransformer : public stream::filter_output {
public:
    /// Raises counted_ptr_null if `port` is empty.
    OutputTransformer(const CountedOutput& port, Transform& transform);
    ~OutputTransformer() override;

    using stream::filter_output::write;

    void close() override;
    void finish() override;

private:
    CountedOutput target;
    pattern::AcquiredPtr<Transform> transform;
};

} // namespace harbor6::data

#pragma once

#include "outside/shell/attributes.h"

#include <utility>

namespace harbor6 {

/// An index that all objects of a class share, and that the first of them fills.
struct SharedIndex {
    Attributes::Index keys;
    bool filled = false;

    /// Whether the caller has to fill it.
    bool fillNow() { return !std::exchange(filled, true); }
};

} // namespace harbor6

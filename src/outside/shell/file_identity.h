#pragma once

#include "stream/structure.h"

namespace fs {

/// Which object of a file system an item is, whatever its name. Two default-made ones are equal.
class HARBOR6_API Spec : public un::structure {
public:
    ~Spec() override;

    std::uint64_t device = 0;
    std::uint64_t node = 0;

    friend bool operator==(const Spec& a, const Spec& b) { return a.device == b.device && a.node == b.node; }
};

} // namespace fs

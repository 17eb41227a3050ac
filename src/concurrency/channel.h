#pragma once

#include "stream/nio_input.h"
#include "stream/nio_output.h"

namespace nio {

/// One object with two faces: what goes into its output comes out of its input. Neither side moves its
/// position, and neither can seek or knows a size.
class HARBOR6_API channel : public input, public output {
public:
    ~channel() override;

    std::uint64_t tell() const override;
    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override;

protected:
    std::uint64_t position = 0; ///< of the channel as a whole
};

} // namespace nio

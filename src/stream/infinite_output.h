#pragma once

#include "stream/output.h"

namespace stream {

/// Takes whatever is written and keeps nothing but the count.
class HARBOR6_API infinite_output : public output {
public:
    ~infinite_output() override;

    using output::write;

    void write(const char* buffer, unsigned length) override;
    std::uint64_t tell() const override;
    void write(char byte) override;
    void copy_from(input& source) override;
    /// Sets the count.
    void resize(std::uint64_t size) override;
};

} // namespace stream

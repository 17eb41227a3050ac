#pragma once

#include "stream/nio_input.h"

namespace nio {

/// Forwards reads to another nio::input, the source, which it doesn't own and which must outlive it or be
/// replaced. It counts its own position from where the source stood when it was attached. One thread at a
/// time, the one that may use the source.
class HARBOR6_API filter_input : public input {
public:
    /// Attaches `source`, which may be null as long as nothing is read.
    explicit filter_input(input* source);
    ~filter_input() override;

    /// Reads from the source and moves the position by what came.
    unsigned read(char* buffer, unsigned length) override;

    /// Takes another source and its position.
    virtual void attach(input* source);
    virtual input* attached() const;

private:
    input* inner = nullptr;
};

/// A filter that keeps the source's position as its own.
class HARBOR6_API direct_input : public filter_input {
public:
    explicit direct_input(input* source);
    ~direct_input() override;

    /// Takes the source's position afresh.
    void start() override;
    /// Asks the source; the position stays if it refuses.
    bool seek(std::uint64_t value) override;
    /// The source's.
    std::uint64_t size() const override;
};

} // namespace nio

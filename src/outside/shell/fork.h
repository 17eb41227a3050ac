#pragma once

#include "outside/shell/attributes.h"
#include "outside/shell/transform.h"

namespace harbor6 {

/// One stream of data in a file. This one has none: a host's class gives the streams.
class HARBOR6_API Fork : public Attributes {
public:
    ~Fork() override;

    /// Keeps its place in the table; nothing calls it.
    virtual void forkHook(std::uint32_t x);
    /// A stream on the fork's bytes, from the first one on; empty if the fork can't be read. `expanding` asks
    /// for the bytes themselves and not for a packed form in which they may be kept; all callers here do.
    /// With `shared` the stream may be one that others use too.
    virtual data::CountedInput input(bool expanding) const;
    virtual data::random::CountedInput randomInput(bool expanding, bool shared) const;
    /// A stream that replaces the fork's bytes; letting go of it closes it. Empty if the fork can't be
    /// written.
    virtual data::CountedOutput output(bool expanding);
    virtual data::random::CountedOutput randomOutput(bool expanding);
    /// A transform with this fork's bytes as its input, counted for the caller.
    virtual Transform& acquireExpansionTransform() const;
    /// A transform that writes this fork, counted for the caller, or null.
    virtual Transform* acquireCompressionTransform();

    std::uint32_t id = 0;           ///< number of the fork in its file
    mutable bool committed = false; ///< the fork has been brought over to another file
};

} // namespace harbor6

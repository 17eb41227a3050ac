#pragma once

#include "harbor6/shell/attributes.h"
#include "harbor6/shell/ref_counted.h"
#include "harbor6/stream/counted_stream.h"
#include "harbor6/stream/filters.h"

namespace harbor6 {

/// Carries the bytes of one fork to another, changing them on the way if a class wants to. This one copies.
/// Whoever hands it out has set the side that is its own; the other side is set by the caller before run().
class HARBOR6_API Transform : public pattern::RefCounted {
public:
    ~Transform() override;

    void destroy() override;

    virtual void setInput(const data::CountedInput& input);
    virtual void setOutput(const data::CountedOutput& output);
    /// Moves all bytes of the input to the output; an empty holder on either side raises counted_ptr_null.
    virtual void run();
    /// Ends the output and lets go of both sides.
    virtual void finishRun();
    /// What to write into instead of running; here the output itself.
    virtual data::CountedOutput outputPort();

private:
    data::CountedInput input;
    data::CountedOutput output;
};

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

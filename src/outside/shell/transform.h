#pragma once

#include "outside/shell/ref_counted.h"
#include "stream/counted_stream.h"

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

} // namespace harbor6

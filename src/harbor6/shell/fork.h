#pragma once

#include "harbor6/shell/attributes.h"
#include "harbor6/shell/ref_counted.h"
#include "harbor6/stream/counted_stream.h"
#include "harbor6/stream/filters.h"

namespace harbor6 {

/// Moves the bytes of one fork to another; a derived class may change them on the way, this one copies. The
/// fork that creates it sets its own side, the caller sets the other before run(). Counted; used by one
/// thread at a time.
class HARBOR6_API Transform : public pattern::RefCounted {
public:
    ~Transform() override;

    void destroy() override;

    /// Share the stream with the caller until finishRun() or the end of the transform.
    virtual void setInput(data::CountedInput& input);
    virtual void setOutput(data::CountedOutput& output);
    /// Moves all bytes of the input to the output. Raises counted_ptr_null if either is empty; failures of
    /// the streams pass through.
    virtual void run();
    /// Closes the output, if any, and drops both streams.
    virtual void finishRun();
    /// The stream to write into instead of calling run(): here the output itself, empty if none is set.
    virtual data::CountedOutput outputPort();

private:
    data::CountedInput input;
    data::CountedOutput output;
};

/// One stream of data in a file, with attributes of its own. This one has no data: a host's or a format's
/// class supplies the streams. It belongs to its file and is used by one thread at a time.
class HARBOR6_API Fork : public Attributes {
public:
    ~Fork() override;

    /// Reserved; never called.
    virtual void forkHook(std::uint32_t x);
    /// The fork's bytes from the first one on; empty if the fork can't be read. `expanding` asks for the
    /// contents rather than for a packed form in which they are stored. For the file of an archive the stream
    /// must take back what it delivered last (unread) and seek back into it, by 256 KiB at least: MSZIP
    /// cabinets need that. stream::memory_input and host::file_input do.
    virtual data::CountedInput input(bool expanding) const;
    /// The same with random access; with `shared` the stream may be one that others use too.
    virtual data::random::CountedInput randomInput(bool expanding, bool shared) const;
    /// A stream that replaces the fork's bytes, and is closed when its last holder drops it. Empty if the
    /// fork can't be written.
    virtual data::CountedOutput output(bool expanding);
    /// The same with random access.
    virtual data::random::CountedOutput randomOutput(bool expanding);
    /// A transform whose input is this fork, counted for the caller.
    virtual Transform& acquireExpansionTransform() const;
    /// A transform whose output is this fork, counted for the caller; null if the fork can't be written
    /// through one.
    virtual Transform* acquireCompressionTransform();

    mutable bool committed = false; ///< has been copied to another file
    std::uint32_t id = 0;           ///< number of the fork in its file
};

} // namespace harbor6

namespace harbor6::data {

/// Writes into a transform's port and keeps both alive. close() does nothing: the port is closed when its
/// last holder drops it.
class HARBOR6_API OutputTransformer : public stream::filter_output {
public:
    /// Raises counted_ptr_null if `port` is empty.
    OutputTransformer(const CountedOutput& port, Transform& transform);
    ~OutputTransformer() override;

    using stream::filter_output::write;

    void close() override;
    /// finish() of the port.
    void finish() override;

private:
    CountedOutput target;
    pattern::AcquiredPtr<Transform> transform;
};

} // namespace harbor6::data

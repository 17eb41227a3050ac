#pragma once

#include "harbor6/stream/filters.h"

#include <cstdint>

namespace stream {

/// A base for outputs that need to know the size of the segment that a multi_output will write to them, for
/// instance to tell a complete segment from one that ended early.
class HARBOR6_API segment_listener {
public:
    segment_listener() = default;
    segment_listener(const segment_listener&) = delete;
    segment_listener& operator=(const segment_listener&) = delete;
    virtual ~segment_listener();

    /// Called when the output is attached: up to `size` bytes follow.
    virtual void segment_begins(std::uint64_t size) = 0;
    /// The segment is damaged, however many bytes came, and nothing follows; nothing by default.
    virtual void segment_failed();
};

/// Writes to a series of streams, `segment_size` bytes to each. A derived class sets `segment_size` and
/// attaches a stream for the first segment, and again in next() for each further one. A write ends a segment
/// as soon as it is full, and any empty segments after it. While no stream is attached, bytes are counted and
/// discarded. It owns no stream; an attached one must live until it is replaced. One thread at a time.
/// Failures are those of the attached stream and of next().
class HARBOR6_API multi_output : public filter_output {
public:
    multi_output();
    ~multi_output() override;

    using filter_output::write;

    void write(const char* buffer, unsigned length) override;
    void write(char byte) override;
    /// The number of bytes written to all segments, discarded ones included.
    std::uint64_t tell() const override;
    /// All ones: unknown.
    std::uint64_t size() const override;
    /// Also tells `target`, if it is a segment_listener, the `segment_size`, which must be set before.
    void attach(output* target) override;

    /// Called when a segment is full; detaches the stream by default.
    virtual void next();

protected:
    std::uint64_t segment_size = 0; ///< bytes of the current segment
    std::uint64_t written = 0;      ///< what tell() returns
    std::uint64_t write_state = 0;  ///< bytes written to the current segment
};

} // namespace stream

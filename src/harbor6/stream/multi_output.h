#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/stream/filters.h"

#include <cstdint>

namespace stream {

/// Mixed into an output that wants to know how many bytes a multi_output has in store for it: it is told when
/// it is attached. Without this an output that is let go can't tell a whole segment from one that ended
/// early.
class HARBOR6_API segment_listener {
public:
    segment_listener() = default;
    segment_listener(const segment_listener&) = delete;
    segment_listener& operator=(const segment_listener&) = delete;
    virtual ~segment_listener();

    virtual void segment_begins(std::uint64_t size) = 0;
};

/// Writes to a series of streams, each for `segment_size` bytes. Whoever derives from it attaches a stream
/// and sets `segment_size` for the first segment, and again in next() for each further one. A write ends a
/// segment as soon as it is full, the empty ones behind it included. With no stream attached, bytes are
/// counted and dropped. An attached stream that is a segment_listener is told `segment_size`, which must
/// therefore be set first.
class HARBOR6_API multi_output : public filter_output {
public:
    multi_output();
    ~multi_output() override;

    using filter_output::write;

    void write(const char* buffer, unsigned length) override;
    void write(char byte) override;
    std::uint64_t tell() const override;
    /// All ones: not known.
    std::uint64_t size() const override;
    void attach(output* target) override;

    /// A segment is full: the base detaches the stream.
    virtual void next();

protected:
    std::uint64_t segment_size = 0;
    std::uint64_t written = 0;     ///< through this output so far
    std::uint64_t write_state = 0; ///< bytes in the current segment
};

} // namespace stream

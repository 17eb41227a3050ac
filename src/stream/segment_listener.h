#pragma once

#include "outside/groundwork/export.h"

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

} // namespace stream

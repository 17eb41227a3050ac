#pragma once

#include "outside/groundwork/export.h"
#include "stream/array.h"

#include <cstdint>

namespace format {

/// Recognises a format in a sample of a stream's bytes. A format makes it and keeps it; the host sets
/// `sample`, whose bytes it owns, and asks. The two tests need not be asked in order. For one call at a time.
class HARBOR6_API classifier {
public:
    classifier(std::uint32_t format_number, std::uint32_t identifier);
    classifier(const classifier&) = delete;
    classifier& operator=(const classifier&) = delete;
    virtual ~classifier();

    /// 0.
    virtual unsigned default_result();
    /// The quick test: 1 if the format's signature stands at `offset` of the sample, else 0.
    virtual unsigned matches_at(unsigned offset) const = 0;
    /// The thorough test: whether an archive of the format begins at `offset`. Raises what the stream classes
    /// raise if the sample ends too early.
    virtual bool confirm_at(unsigned offset) = 0;

    std::uint32_t format_number;
    void* owner = nullptr; ///< the host's
    std::uint32_t identifier;
    un::array<char> sample;
};

} // namespace format

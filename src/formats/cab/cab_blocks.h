#pragma once

#include "formats/cab/cab_records.h"

#include <string_view>

namespace format::cab {

/// The data blocks of one cabinet folder, one after another. For one thread at a time.
class block_source {
public:
    block_source() = default;
    block_source(const block_source&) = delete;
    block_source& operator=(const block_source&) = delete;
    virtual ~block_source();

    /// Goes to the next block: `block` is its record, and `payload()` delivers its payload next. Returns
    /// false after the last one, or if the owner needs no more of them. What reading raises passes through.
    virtual bool next() = 0;
    /// The same stream throughout. All of a payload must be read before the next call of next().
    virtual stream::input& payload() = 0;
    /// After stream::cut_short of next(): the bytes of the payload that the stream held.
    virtual std::string_view received() const;

    data_header block;
};

/// The blocks of `folder`, back to back in `input`, which is positioned on the first. It owns neither.
class sequential_blocks : public block_source {
public:
    sequential_blocks(stream::input& input, const folder_header& folder);
    ~sequential_blocks() override;

    bool next() override;
    stream::input& payload() override { return input; }
    /// Passes over all blocks that next() has not gone to.
    void skipRest();

private:
    stream::input& input;
    std::uint32_t left;
};

} // namespace format::cab

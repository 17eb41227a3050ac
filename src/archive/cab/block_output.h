#pragma once

#include "model/file.h"
#include "stream/counted_stream.h"
#include "stream/infinite_output.h"
#include "stream/multi_output.h"

#include <vector>

namespace harbor6::cab {

/// Cuts the stream of one cabinet folder into its files. Whoever makes it appends to `entries`, then calls
/// start() and writes. Each target is opened when its bytes begin, closed and committed when it has them all;
/// the bytes of an entry without a target go nowhere. Bytes behind the last entry are dropped.
///
///              current      stream attached
///   collecting none         none
///   writing    an entry     the target's output, or the sink
///   exhausted  at the end   none: next() left the last entry
///   finished   at the end   none: finish() ended the pass, committing the entry it stood on
class block_output : public stream::multi_output {
public:
    struct block_entry {
        std::uint64_t size = 0;            ///< uncompressed bytes of the file
        pattern::AcquiredPtr<File> target; ///< null if nobody wants it
    };

    block_output();
    /// Calls finish(); what that raises ends there.
    ~block_output() override;

    using stream::multi_output::write;

    void start() override;
    void finish() override;
    void next() override;

    std::vector<block_entry> entries; ///< in the order of the records

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void openCurrent();
    void closeCurrent();
    block_entry* currentEntry();

    std::size_t current = none;
    data::CountedOutput current_output;
    stream::infinite_output sink;
};

} // namespace harbor6::cab

#pragma once

#include "harbor6/model/file.h"
#include "harbor6/stream/multi_output.h"

#include <vector>

namespace harbor6 {

/// Cuts one stream into the files that lie in it back to back, as archives with solid compression keep them.
/// Whoever makes it appends to `entries`, calls start() and writes; one thread at a time. Each target is
/// opened when its bytes begin, closed and committed when it has them all; the bytes of an entry without a
/// target are discarded, and so are those behind the last entry. What a target raises passes through.
///
///              current      stream attached
///   collecting none         none
///   writing    an entry     the target's output, or the sink
///   exhausted  at the end   none: next() left the last entry
///   finished   at the end   none: finish() ended the pass, committing the entry it stood on
class HARBOR6_API FileSplitter : public stream::multi_output {
public:
    struct entry {
        std::uint64_t size = 0;            ///< bytes of the file
        pattern::AcquiredPtr<File> target; ///< null if nobody wants it
    };

    FileSplitter();
    /// Calls finish() and drops what it raises. A file that a failure left half written is committed with the
    /// bytes it has.
    ~FileSplitter() override;

    using stream::multi_output::write;

    /// Opens the first target.
    void start() override;
    /// Commits the current entry, if any; a second call does nothing.
    void finish() override;
    /// Commits the current entry and opens the next.
    void next() override;
    /// Goes on from a file that has all its bytes over the empty ones behind it. To be called when the stream
    /// has ended without a failure: no write follows that would do it.
    void passEmptyFiles();

    std::vector<entry> entries; ///< in the order of the stream

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void openCurrent();
    void closeCurrent();
    entry* currentEntry();

    std::size_t current = none;
    data::CountedOutput current_output;
    stream::infinite_output sink;
};

} // namespace harbor6

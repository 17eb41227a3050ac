#pragma once

#include "harbor6/model/file.h"
#include "harbor6/stream/multi_output.h"

#include <vector>

namespace harbor6 {

/// Splits a stream into the files that it contains back to back, as in archives with solid compression. The
/// owner appends to `entries`, calls start() and writes, on one thread at a time. Each target is opened when
/// its bytes begin, and closed and committed when it has all of them. Bytes of an entry without a target are
/// discarded, and so are bytes after the last entry. What a target raises passes through.
///
///              current      stream attached
///   collecting none         none
///   writing    an entry     the target's output, or the sink
///   ended      an entry     none: endStream() closed it
///   exhausted  at the end   none: next() left the last entry
///   finished   at the end   none: finish() ended the pass, committing the current entry
class HARBOR6_API FileSplitter : public stream::multi_output {
public:
    struct entry {
        std::uint64_t size = 0;            ///< of the file, in bytes
        pattern::AcquiredPtr<File> target; ///< null if the file is not wanted
    };

    FileSplitter();
    /// Calls finish() and ignores what it raises: a file that a failure left half written is committed with
    /// the bytes it has.
    ~FileSplitter() override;

    using stream::multi_output::write;

    /// Opens the first target. Once, before the first write.
    void start() override;
    /// Commits the current entry, if any; a second call does nothing.
    void finish() override;
    /// Commits the current entry and opens the next.
    void next() override;
    /// To be called when the stream has ended without a failure, since no write follows. Commits a current
    /// file that is complete and the empty files after it, except the last of them; then closes the stream of
    /// the file that is current, which finish() commits. Bytes written later are discarded.
    void endStream();
    /// Whether a target still waits for bytes or for its commit. Before start() any target does.
    bool wantsMore() const;

    std::vector<entry> entries; ///< in the order of the stream; not to be changed after start()

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    void openCurrent();
    void closeCurrent();
    entry* currentEntry();
    std::size_t findWantedEnd() const;

    std::size_t current = none;
    std::size_t wanted_end = 0; ///< index behind the last entry that had a target at start()
    data::CountedOutput current_output;
    stream::infinite_output sink;
};

} // namespace harbor6

#pragma once

#include "harbor6/model/file.h"
#include "harbor6/stream/counted_stream.h"
#include "harbor6/stream/output.h"

#include <functional>
#include <memory>
#include <vector>

namespace harbor6 {

class ScratchLog;
class ScratchSpace;

/// Splits a stream into files that are stated by offset and size: ranges may share bytes, overlap, leave gaps
/// and be added in any order. Each byte is passed on once to every file that covers it, in one pass. A file
/// is opened when its first byte arrives, and closed and committed when it has all of them. Of more than
/// `at_once` files that overlap, the rest waits in the scratch space until its last byte has arrived.
///
/// The owner adds ranges, before the first write or between writes, writes, and calls finish(). A file of
/// whose bytes none arrived is released without a commit, unless it begins where the stream ended. What a
/// target raises passes through. It doesn't own the space. One thread at a time.
class HARBOR6_API RangeSplitter : public stream::output {
public:
    static constexpr std::size_t usual_at_once = 16; ///< files that are open
    /// A few records can state any number of copies of a long stream, so the bytes that are passed on or
    /// deferred are limited: a file that begins beyond that is released as one that never began.
    static constexpr std::uint64_t shared_bytes = 1u << 30;
    static constexpr std::uint64_t shared_times = 64;

    struct range {
        std::uint64_t offset = 0;          ///< of its first byte in the stream
        std::uint64_t size = 0;            ///< in bytes
        pattern::AcquiredPtr<File> target; ///< not null
    };

    explicit RangeSplitter(ScratchSpace& space);
    RangeSplitter(const RangeSplitter&) = delete;
    RangeSplitter& operator=(const RangeSplitter&) = delete;
    /// Calls finish() and ignores what it raises.
    ~RangeSplitter() override;

    using stream::output::write;

    /// Adds a file. One that begins before tell() has lost its first bytes, and is released at once.
    void add(range file);
    /// To be called before finish() if the stream may be empty.
    void start() override;
    void write(const char* buffer, unsigned length) override;
    void write(char byte) override { write(&byte, 1); }
    /// The number of bytes written.
    std::uint64_t tell() const override { return written; }
    /// Commits every file that was opened, or would be by the next byte, with the bytes that it has, and the
    /// empty ones; releases the rest. Before start() and the first write it releases all.
    void finish() override;

    /// Whether a file that isn't empty waits for bytes.
    bool wantsMore() const;
    /// How many files were released because of the limits of shared bytes.
    std::size_t leftOut() const { return left_out; }
    /// Whether a file was committed without all of its bytes.
    bool endedEarly() const { return ended_early; }
    /// States that the next `length` bytes to be written may be wrong.
    void markDamaged(std::uint64_t length);

    /// At least 1. With 1 a file has all its bytes before the next one gets any.
    std::size_t at_once = usual_at_once;
    /// Called with each file that contains bytes marked as damaged, before it is committed.
    std::function<void(File&)> damaged;

private:
    struct open_file {
        range file;
        data::CountedOutput into;
    };

    bool advanceTo(std::uint64_t end);
    range takeNext();
    bool mayBegin(const range& file) const;
    void begin(range file, const char* buffer, unsigned length);
    void defer(range file, const char* buffer, unsigned length);
    void deliverDeferred();
    data::CountedOutput open(const range& file) const;
    void commit(range& file);

    ScratchSpace& space;
    std::vector<range> waiting; ///< from `next` on, by offset unless `sorted` is false
    std::size_t next = 0;
    bool sorted = true;
    bool started = false;
    std::size_t sized = 0; ///< how many of the waiting ones aren't empty
    std::vector<open_file> active;
    std::vector<range> deferred;
    std::unique_ptr<ScratchLog> kept; ///< the bytes from `kept_from` on, while a deferred file needs them
    std::uint64_t kept_from = 0;
    std::uint64_t kept_end = 0; ///< of the last deferred file
    std::uint64_t written = 0;
    std::size_t left_out = 0;
    bool ended_early = false;
    std::uint64_t passed_on = 0;                                 ///< bytes, and the sizes of deferred files
    std::vector<std::pair<std::uint64_t, std::uint64_t>> damage; ///< begin and end of each marked part
};

} // namespace harbor6

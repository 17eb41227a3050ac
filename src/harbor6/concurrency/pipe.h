#pragma once

#include "harbor6/concurrency/synchronization.h"
#include "harbor6/stream/nio.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace nio {

/// An output and an input in one object: what is written to the output is read from the input. The position
/// is that of the whole channel and isn't moved by reads or writes.
class HARBOR6_API channel : public input, public output {
public:
    ~channel() override;

    /// `position`: 0 unless a derived class sets it; set_tell() of either side doesn't affect it.
    std::uint64_t tell() const override;
    /// False.
    bool seek(std::uint64_t value) override;
    /// All ones: unknown.
    std::uint64_t size() const override;

protected:
    std::uint64_t position = 0; ///< of the channel as a whole
};

/// A ring of bytes between exactly two threads: one writes to the output, one reads from the input. The
/// writer ends its run with finish(), the reader at the end of the data or with abort(); then, with neither
/// side active, reset() prepares the next run. The pipe must outlive both sides' last calls.
///
/// Neither side signals after moving bytes, only when it is about to sleep: a reader that found the ring
/// empty sleeps until the writer has filled it or finished. If an event fails, an operation raises
/// basic::exception.
class HARBOR6_API pipe : public channel {
public:
    /// A ring of `capacity` bytes, which holds at most one byte less. Raises basic::exception "pipe size must
    /// be a power of 2".
    explicit pipe(unsigned capacity);
    ~pipe() override;

    /// Reader: waits for `length` bytes and returns how many were read; fewer only at the end of the data.
    unsigned read(char* buffer, unsigned length) override;
    /// Reader: the next byte as 0 to 255, -1 at the end.
    int get() override;
    /// Reader: the writer needn't wait any more; what it still writes is dropped.
    void abort() override;

    /// Writer: writes `length` bytes, waiting for room; drops the rest after the reader has called abort().
    void write(const char* buffer, unsigned length) override;
    void put(char byte) override;

    /// Writer: marks the end of the data and wakes the reader. One operation for input and output.
    void finish() override;

    /// With neither side active: makes the pipe as after construction. The owner calls it.
    void reset();

private:
    unsigned filled_run(unsigned from) const;
    unsigned free_run(unsigned from) const;
    void reset_events();

    const unsigned capacity;
    const std::unique_ptr<char[]> buffer;
    // Each side's word has a cache line of its own.
    alignas(64) std::atomic<std::uint32_t> read_index{0};  ///< next byte to read, below `capacity`
    alignas(64) std::atomic<std::uint32_t> write_index{0}; ///< next byte to write, below `capacity`
    alignas(64) std::atomic<bool> write_closed{false};     ///< the writer has finished
    std::atomic<bool> read_closed{false};                  ///< the reader has called abort()
    basic::event data_event;                               ///< the reader sleeps on this
    basic::event space_event;                              ///< the writer sleeps on this
};

} // namespace nio

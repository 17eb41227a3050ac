#pragma once

#include "harbor6/concurrency/synchronization.h"
#include "harbor6/stream/nio.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace nio {

/// One object with two faces: what goes into its output comes out of its input. Neither side moves its
/// position, and neither can seek or knows a size.
class HARBOR6_API channel : public input, public output {
public:
    ~channel() override;

    std::uint64_t tell() const override;
    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override;

protected:
    std::uint64_t position = 0; ///< of the channel as a whole
};

/// A ring of bytes between two threads: one writes through the output face, one reads through the input face,
/// no more of either. The writer's run ends with finish(), the reader's at the end of the data or with
/// abort(); then, with neither side active, reset() makes the pipe new again.
///
/// Neither side signals after moving bytes, only when it is about to sleep: a reader that has found the ring
/// empty sleeps until the writer has filled it or finished. Failures of the events are basic::exception.
class HARBOR6_API pipe : public channel {
public:
    /// A ring of `capacity` bytes, which holds at most one less. Raises basic::exception "pipe size must be a
    /// power of 2".
    explicit pipe(unsigned capacity);
    ~pipe() override;

    /// Reader: takes `length` bytes, fewer only at the end of the data.
    unsigned read(char* buffer, unsigned length) override;
    /// Reader: the next byte as 0 to 255, -1 at the end.
    int get() override;
    /// Reader: tells the writer to stop. What it still writes is dropped.
    void abort() override;

    /// Writer: puts in `length` bytes, waiting for room; drops what is left once the reader has given up.
    void write(const char* buffer, unsigned length) override;
    void put(char byte) override;

    /// Writer: the end of the data. Both faces share it.
    void finish() override;

    void reset();

private:
    unsigned filled_run(unsigned from) const;
    unsigned free_run(unsigned from) const;
    void open();

    const unsigned capacity;
    const std::unique_ptr<char[]> buffer;
    // The reader's word and the writer's stand on cache lines of their own.
    alignas(64) std::atomic<std::uint32_t> read_index{0};  ///< next byte to read, below `capacity`
    alignas(64) std::atomic<std::uint32_t> write_index{0}; ///< next byte to write, below `capacity`
    alignas(64) std::atomic<bool> write_closed{false};     ///< the writer has finished
    std::atomic<bool> read_closed{false};                  ///< the reader has given up
    basic::event data_event;                               ///< the reader sleeps on this
    basic::event space_event;                              ///< the writer sleeps on this
};

} // namespace nio

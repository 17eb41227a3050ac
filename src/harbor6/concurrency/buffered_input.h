#pragma once

#include "harbor6/stream/nio.h"

#include <memory>
#include <span>

namespace nio {

/// Reads ahead of its consumer, so that single bytes need no call of the source. It doesn't own the source,
/// which must be able to seek if finish() is to return unconsumed bytes to it. One call reads the source at
/// most once, so a short result doesn't imply the end; the end isn't remembered either: the next call reads
/// the source again. What the source raises passes through. One thread at a time.
class HARBOR6_API buffered_input final : public direct_input {
public:
    /// A buffer of `capacity` bytes, at least 1; begins at the position of `source`.
    buffered_input(input& source, unsigned capacity);
    ~buffered_input() override;

    /// Drops what is buffered, without returning it to the source, and begins at the source's present
    /// position.
    void start() override;
    /// Returns the unconsumed bytes to the source by seeking it back to tell(). Raises nio::exception
    /// "buffered_input failed to yield unused data" if the source refuses, and then keeps them. Doesn't touch
    /// the source if nothing is buffered.
    void finish() override;
    /// Bytes beyond those buffered are read straight into `target` if they are half of the capacity or more.
    unsigned read(char* target, unsigned length) override;
    /// Inline, because bit readers call it for every byte.
    int get() override { return read_index < fill ? buffer[read_index++] : get_refilled(); }
    /// Also sets the source's position, so that both agree.
    void set_tell(std::uint64_t value) override;
    /// The position of the next byte to be delivered.
    std::uint64_t tell() const override { return base + read_index; }
    /// Seeks the source. Drops the buffer, also when the source refuses and its position then becomes this
    /// one's; but seeking to the present position does nothing and returns true.
    bool seek(std::uint64_t value) override;
    /// Drops what is buffered, without returning it to the old source.
    void attach(input* source) override;

    /// The bytes that are buffered and not yet delivered; valid until the next call of a non-const operation.
    std::span<const unsigned char> ahead() const { return {buffer.get() + read_index, fill - read_index}; }
    /// Marks the first `count` of them as delivered; at most ahead().size().
    void pass(std::size_t count) { read_index += static_cast<unsigned>(count); }

private:
    int get_refilled();
    void refill();
    void drop();
    unsigned deliver(char* target, unsigned length);

    std::unique_ptr<unsigned char[]> buffer;
    unsigned capacity;
    unsigned fill = 0;       ///< valid bytes in `buffer`
    unsigned read_index = 0; ///< next byte to deliver, at most `fill`
    std::uint64_t base;      ///< the source's position of the first byte in `buffer`
};

} // namespace nio

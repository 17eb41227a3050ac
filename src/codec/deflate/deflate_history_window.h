#pragma once

#include "harbor6/stream/nio.h"

#include <cstdint>
#include <memory>

namespace deflate {

/// The last decoded bytes: the history that matches refer to, followed by the bytes not yet written to the
/// output. Callers call make_room() before they store bytes; that writes bytes out and moves the history to
/// the front of the buffer when needed. It owns its buffer, not the output. What the output raises passes
/// through. For one thread at a time.
class history_window {
public:
    /// Bytes behind the room that a loop may overwrite while it copies in wide pieces.
    static constexpr unsigned overshoot = 64;

    /// Allocates 2 to the power `extent` bytes of history and room for decoding, and keeps `output` as the
    /// output, which must outlive the window. Only the first call has an effect.
    void set_up(unsigned extent, unsigned maximum_match, nio::output& output);

    /// Begins a run. Bytes that an earlier run failed to write out become history and are never written.
    /// Moves the history to the front if a run of the usual size, 32 KiB, wouldn't fit behind it, so that the
    /// run is one write.
    void begin();

    /// Makes room for `count` bytes, at most maximum_match.
    void make_room(unsigned count) {
        if (write_position + count > capacity)
            slide();
    }
    /// Stores one byte, for which there must be room.
    void put(unsigned char byte) { buffer[write_position++] = byte; }
    /// Copies `length` bytes from `distance` bytes back, one by one in ascending order; there must be room.
    /// Raises basic::algorithm_exception "deflate distance too far back" if fewer bytes were decoded.
    void copy(std::uint32_t distance, std::uint32_t length);
    /// Writes all bytes to the output that haven't been written yet, in one write.
    void flush();

    /// For loops that store bytes themselves: next() is where the next byte goes, with room() bytes of space
    /// from there on and written() bytes of history before it. The pointer is valid until room is made;
    /// grow() says how many bytes were stored.
    unsigned char* next() { return buffer.get() + write_position; }
    unsigned room() const { return capacity - write_position; }
    unsigned written() const { return write_position; }
    void grow(unsigned count) { write_position += count; }

private:
    void slide();
    void move_history();

    std::uint32_t history_size = 0;
    std::uint32_t slack = 0;
    std::uint32_t capacity = 0;
    std::unique_ptr<unsigned char[]> buffer;
    std::uint32_t write_position = 0; ///< where the next byte goes
    std::uint32_t flushed = 0;        ///< bytes from the start already written out
    nio::output* output = nullptr;
};

} // namespace deflate

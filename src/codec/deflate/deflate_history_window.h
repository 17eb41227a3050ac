#pragma once

#include "harbor6/stream/nio.h"

#include <cstdint>
#include <memory>

namespace deflate {

/// What was decoded last: the history that matches refer to, and behind it the bytes that wait to be written
/// to the output. Whoever stores bytes makes room for them first; that is when bytes are written out and the
/// history moves to the front.
class history_window {
public:
    /// How many bytes behind the room a loop may scribble on while it copies in wide pieces.
    static constexpr unsigned overshoot = 64;

    /// Allocates 2 to the power `extent` bytes of history and room beside it. Neither the memory nor the
    /// output is touched. The first call counts, any other does nothing.
    void set_up(unsigned extent, unsigned maximum_match, nio::output& output);

    /// Begins a run: what an earlier run failed to write out stays as history but is never written. Moves the
    /// history to the front if a cabinet's block wouldn't fit behind it, so that the block goes out in one.
    void begin();

    /// Sees to it that `count` bytes fit, at most maximum_match.
    void make_room(unsigned count) {
        if (write_position + count > capacity)
            slide();
    }
    void put(unsigned char byte) { buffer[write_position++] = byte; }
    /// Copies `length` bytes from `distance` behind, one by one in ascending order. Raises
    /// basic::algorithm_exception if the window doesn't reach that far back.
    void copy(std::uint32_t distance, std::uint32_t length);
    /// Writes out all bytes that haven't been.
    void flush();

    /// For loops that store on their own: where the next byte goes, with room() bytes behind it and written()
    /// bytes of history ahead of it. grow() tells how many were stored.
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

#include "codec/deflate/deflate_history_window.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <cstring>

namespace deflate {

namespace {

constexpr unsigned batch = 65536;     ///< bytes between two moves of the history
constexpr unsigned usual_run = 32768; ///< an MSZIP block

} // namespace

void history_window::set_up(unsigned extent, unsigned maximum_match, nio::output& target) {
    if (buffer)
        return;
    history_size = 1u << extent;
    slack = maximum_match + batch;
    capacity = history_size + slack;
    buffer = std::make_unique_for_overwrite<unsigned char[]>(capacity + overshoot);
    output = &target;
}

void history_window::begin() {
    flushed = write_position;
    if (room() < usual_run)
        move_history();
}

void history_window::move_history() {
    const std::uint32_t surplus = write_position > history_size ? write_position - history_size : 0;
    const std::uint32_t drop = std::min(flushed, surplus);
    std::memmove(buffer.get(), buffer.get() + drop, write_position - drop);
    write_position -= drop;
    flushed -= drop;
}

void history_window::slide() {
    flush();
    move_history();
}

void history_window::flush() {
    const std::uint32_t from = flushed;
    flushed = write_position;
    if (from < write_position)
        output->write(reinterpret_cast<const char*>(buffer.get() + from), write_position - from);
}

void history_window::copy(std::uint32_t distance, std::uint32_t length) {
    if (distance > write_position)
        throw basic::algorithm_exception("deflate distance too far back");
    unsigned char* const to = next();
    if (distance == 1)
        std::memset(to, to[-1], length);
    else
        // The pattern of `distance` bytes is doubled until it is long enough.
        for (std::uint32_t done = 0, most = distance; done < length; most = done + distance) {
            const auto count = std::min(most, length - done);
            std::memcpy(to + done, to - distance, count);
            done += count;
        }
    grow(length);
}

} // namespace deflate

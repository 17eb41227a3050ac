#pragma once

#include "harbor6/stream/random.h"

#include <functional>
#include <memory>

namespace stream {

/// Reads bytes that a function delivers by their place, in any order, through a window of 64 KiB. One thread
/// at a time. What the function raises passes through.
///
/// A read that delivers fewer bytes than asked is no failure: decoders read beyond the end and seek back. But
/// bytes that are pushed back after such a read were needed and are incomplete: that raises cut_short.
class HARBOR6_API positioned_input : public random::input {
public:
    /// Reads up to `length` bytes at `offset`; returns how many came, 0 at the end.
    using source = std::function<std::size_t(std::uint64_t offset, char* buffer, std::size_t length)>;

    positioned_input(source bytes, std::uint64_t size);
    ~positioned_input() override;

    using stream::input::read;

    bool seek(std::uint64_t value) override;
    std::uint64_t size() const override;
    /// Whether the last read reached the end before it had what was asked for.
    bool came_short() const { return short_read; }
    void unread(const char* bytes, unsigned length) override;
    void unread(char byte) override;

protected:
    unsigned _read(char* buffer, unsigned length) override;
    int _read() override;
    std::uint64_t _tell() const override;

private:
    bool refill();

    source bytes;
    std::uint64_t extent;
    std::unique_ptr<char[]> window;
    std::uint64_t window_start = 0;
    std::size_t window_size = 0;
    std::uint64_t next = 0;
    bool short_read = false;
};

} // namespace stream

#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace host {

/// How far the work on an archive is: a line on the terminal, from half a second on, with bytes, rate, time
/// left and the file at hand. Any thread may tell it; the line is drawn by the thread that does.
class progress {
public:
    static constexpr std::uint64_t unknown = ~std::uint64_t{0};

    /// Nothing is drawn unless `shown`.
    explicit progress(bool shown) : draws(shown) {}

    /// Begins anew, with nothing of `total` bytes, which may be `unknown`.
    void begin(const std::string& archive, std::uint64_t total);
    /// The data of the file `path` begins.
    void at_file(const std::string& path);
    /// The archive was read up to `place`.
    void at(std::uint64_t place) {
        if (draws || shared)
            go_to(place);
    }
    /// Removes the line.
    void end();
    /// From now on at() only stores the place there.
    void count_in(std::atomic<std::uint64_t>& counter) { shared = &counter; }

private:
    using clock = std::chrono::steady_clock;

    void go_to(std::uint64_t place);

    const bool draws;
    std::atomic<std::uint64_t>* shared = nullptr;
    std::mutex mutex; ///< for the members below
    std::string what;
    std::string file;
    std::uint64_t size = unknown;
    clock::time_point begun;
    clock::time_point next_drawing;
};

/// Such as " 45%  12 MB/s  0:07 left  x.cab: a.txt", of at most `width` characters. Without a known `total`
/// the bytes are shown instead of a percentage.
std::string progress_line(std::uint64_t done, std::uint64_t total, double seconds, const std::string& what,
                          std::size_t width);

} // namespace host

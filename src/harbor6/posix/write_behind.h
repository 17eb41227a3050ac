#pragma once

#include "harbor6/concurrency/thread.h"
#include "harbor6/posix/file_writer.h"

#include <condition_variable>
#include <memory>
#include <mutex>

namespace host {

/// Writes files, one at a time, on a thread of its own, so that the caller makes the next bytes meanwhile.
/// The bytes of a write() are copied into a ring; the caller waits while that is full. Between the first
/// write() of a file and settle() the file_writer belongs to this object. The thread is started when enough
/// bytes wait, and ended by the destructor, which settles. One caller.
///
/// A failure of the disk is kept by the file_writer, and what follows for that file is dropped; other
/// failures are raised by the next write().
class write_behind final : private basic::runnable {
public:
    /// A file of fewer bytes is better written by its caller: there is nothing to gain from two threads.
    static constexpr std::uint64_t smallest_file = 131072;

    write_behind();
    ~write_behind();

    /// Takes `bytes`, which are to follow those of the last write() into `to`. Settles another file first.
    void write(const std::shared_ptr<file_writer>& to, std::string_view bytes);
    /// Returns when all bytes have been written or dropped.
    void settle() noexcept;

private:
    void run() override;
    void write_all(std::unique_lock<std::mutex>& lock) noexcept;
    void wait_for_room(std::unique_lock<std::mutex>& lock);
    void start_worker();

    std::mutex access;            ///< of the members below, except where `writing` says whose they are
    std::condition_variable work; ///< there are bytes to write, or the thread is to end
    std::condition_variable rest; ///< there is room, or a call of write_all() has ended
    std::unique_ptr<char[]> ring; ///< made by the first write()
    std::size_t begin = 0;        ///< of the bytes that wait
    std::size_t waiting = 0;      ///< their number, including those that are being written
    bool writing = false;         ///< a thread is in write_all(), and owns the file_writer and the failure
    bool ending = false;
    std::shared_ptr<file_writer> file; ///< null after settle()
    std::exception_ptr failure;
    enum : std::uint8_t { none, running, unavailable } worker = none;
    basic::thread thread; ///< destroyed first
};

} // namespace host

#include "harbor6/posix/write_behind.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace host {

namespace {

constexpr std::size_t capacity = std::size_t{1} << 19;
/// Waking the thread costs as much as writing some ten kilobytes, so it is done for many at a time.
constexpr std::size_t enough = capacity / 4;
constexpr std::size_t longest_write = capacity / 4; ///< its room becomes free as a whole
static_assert(write_behind::smallest_file >= enough);

} // namespace

write_behind::write_behind() = default;

write_behind::~write_behind() {
    settle();
    if (worker != running)
        return;
    {
        const std::lock_guard lock(access);
        ending = true;
        work.notify_one();
    }
    try {
        thread.join();
    } catch (const basic::exception&) {
        // There is no such thread: this is a forked child.
    }
    thread.release();
}

void write_behind::start_worker() {
    worker = unavailable;
    try {
        thread.start(this);
        worker = running;
    } catch (const basic::exception&) {
        // The caller writes.
    }
}

void write_behind::write(const std::shared_ptr<file_writer>& to, std::string_view bytes) {
    if (file != to) {
        settle();
        file = to;
    }
    if (!ring)
        ring = std::make_unique_for_overwrite<char[]>(capacity);
    std::unique_lock lock(access);
    while (!bytes.empty()) {
        if (!writing && failure)
            std::rethrow_exception(std::exchange(failure, nullptr));
        if (waiting == capacity)
            wait_for_room(lock);
        const auto to_index = (begin + waiting) % capacity;
        const auto count = std::min({bytes.size(), capacity - waiting, capacity - to_index});
        lock.unlock(); // only this thread fills the ring
        std::memcpy(ring.get() + to_index, bytes.data(), count);
        bytes.remove_prefix(count);
        lock.lock();
        waiting += count;
        if (!writing && waiting >= enough) {
            if (worker == none)
                start_worker();
            work.notify_one();
        }
    }
}

/// Returns with room in the ring.
void write_behind::wait_for_room(std::unique_lock<std::mutex>& lock) {
    if (worker != running)
        write_all(lock);
    else
        rest.wait(lock, [this] { return waiting < capacity; });
}

void write_behind::settle() noexcept {
    std::unique_lock lock(access);
    rest.wait(lock, [this] { return !writing; });
    write_all(lock); // sooner done than handed over
    file.reset();
    begin = 0;
}

/// Writes until nothing waits. Requires that no thread does so already.
void write_behind::write_all(std::unique_lock<std::mutex>& lock) noexcept {
    writing = true;
    while (waiting > 0) {
        const auto count = std::min({waiting, capacity - begin, longest_write});
        lock.unlock();
        try {
            if (file->failure().empty() && !failure)
                file->write({ring.get() + begin, count});
        } catch (const fs::Exception&) {
            // The file_writer keeps it.
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        begin = (begin + count) % capacity;
        waiting -= count;
        if (waiting + count == capacity)
            rest.notify_one();
    }
    writing = false;
    rest.notify_one();
}

void write_behind::run() {
    std::unique_lock lock(access);
    while (!ending) {
        if (!writing && waiting >= enough)
            write_all(lock);
        else
            work.wait(lock);
    }
}

} // namespace host

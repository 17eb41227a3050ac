#include "harbor6/c_archive.h"
#include "harbor6/concurrency/thread.h"
#include "harbor6/groundwork/platform_memory.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive_finder.h"
#include "harbor6/posix/file_input.h"

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <mutex>
#include <set>

namespace {

using c_interface::aborted;

constexpr std::size_t shortest_piece = 32 * 1024;
constexpr std::size_t longest_piece = 256 * 1024;
constexpr std::size_t most_pieces = 4096;
constexpr std::size_t most_bytes = 1024 * 1024;

/// Bytes of one entry, in their order.
struct piece {
    std::size_t entry = 0;
    std::string bytes;
    bool last = false;     ///< of its entry
    bool complete = false; ///< the last one: no bytes of the entry are missing
};

} // namespace

/// The worker reads the archive and adds pieces at the end of the queue; the caller takes them from its
/// start. While the caller waits with an empty queue, the worker writes into the caller's buffer instead.
struct harbor6_pass : host::entry_receiver, basic::runnable {
    harbor6_pass(harbor6_archive* source, std::size_t first_entry) : archive(source), first(first_entry) {}

    void run() override {
        c_interface::run(*archive, [&] { archive->reader->read(*this); });
        const std::lock_guard lock(mutex);
        finished = true;
        changed.notify_all();
    }

    bool wants(std::size_t entry) override { return entry >= first; }

    void bytes(std::size_t entry, std::string_view more) override {
        if (!follows(entry))
            return;
        std::unique_lock lock(mutex);
        const auto direct = std::min(wanted, more.size());
        if (direct > 0) {
            std::memcpy(target, more.data(), direct);
            target += direct;
            wanted -= direct;
            more.remove_prefix(direct);
            if (wanted == 0)
                changed.notify_all();
            if (more.empty())
                return;
        }
        await_room(lock);
        if (begins_piece(entry) || queue.back().bytes.size() + more.size() > longest_piece) {
            queue.push_back({entry, std::move(spare), false, false});
            spare.clear();
            changed.notify_all(); // the piece in front of it is full
        }
        queue.back().bytes += more;
        queued += more.size();
        if (queue.back().bytes.size() >= awaited)
            changed.notify_all();
    }

    void ended(std::size_t entry, bool complete) override {
        const std::lock_guard lock(mutex);
        try {
            if (!follows(entry))
                return;
            if (begins_piece(entry))
                queue.push_back({entry, {}, false, false});
            wanted = 0; // what follows is of another entry
            queue.back().last = true;
            queue.back().complete = complete;
            delivering = false;
        } catch (...) {
            closing = true; // it is told from destructors too, so nothing is raised before the next bytes
        }
        changed.notify_all();
    }

    /// Whether to deliver the entry of which something came. Entries may share bytes, and then come together:
    /// those that begin while another is delivered are left out, as are those before the first.
    bool follows(std::size_t entry) {
        if (delivering)
            return entry == present || (left_out.insert(entry), false);
        reached = reached || entry == first;
        if (!reached)
            left_out.insert(entry);
        delivering = left_out.count(entry) == 0;
        present = entry;
        return delivering;
    }

    bool begins_piece(std::size_t entry) const {
        return queue.empty() || queue.back().last || queue.back().entry != entry;
    }

    void await_room(std::unique_lock<std::mutex>& lock) {
        changed.wait(lock, [&] { return closing || (queued < most_bytes && queue.size() < most_pieces); });
        if (closing)
            throw aborted();
    }

    /// Makes the next piece `current`, once it has `enough` bytes or the worker adds no more to it; false if
    /// there is none.
    bool take(std::unique_lock<std::mutex>& lock, std::size_t enough) {
        awaited = enough;
        changed.wait(lock, [&] {
            return finished || queue.size() > 1 ||
                   (!queue.empty() && (queue[0].last || queue[0].bytes.size() >= enough));
        });
        awaited = most_bytes;
        if (queue.empty())
            return false;
        spare.swap(current.bytes);
        spare.clear();
        current = std::move(queue.front());
        queue.pop_front();
        place = 0;
        queued -= current.bytes.size();
        changed.notify_all();
        return true;
    }

    /// Waits until the worker has written `length` bytes to `buffer`, or ended the entry; returns how many it
    /// wrote. 0 if there is a piece to take first.
    std::size_t read_directly(std::unique_lock<std::mutex>& lock, char* buffer, std::size_t length) {
        if (!queue.empty() || finished)
            return 0;
        if (length >= most_bytes)
            platform::expect_writes(buffer, length);
        target = buffer;
        wanted = length;
        changed.wait(lock, [&] { return wanted == 0 || !queue.empty() || finished; });
        wanted = 0;
        return static_cast<std::size_t>(target - buffer);
    }

    harbor6_archive* const archive;
    const std::size_t first;
    bool reached = false;    ///< the first entry began; the worker's alone, like the next three
    bool delivering = false; ///< `present` has begun and not ended
    std::size_t present = 0;
    std::set<std::size_t> left_out;
    std::mutex mutex; ///< for the members up to `closing`
    std::condition_variable changed;
    std::deque<piece> queue;
    std::size_t queued = 0;           ///< bytes in the queue
    std::size_t awaited = most_bytes; ///< the size of its first piece for which the caller waits
    char* target = nullptr;           ///< where the caller waits for bytes, while `wanted` is not 0
    std::size_t wanted = 0;
    std::string spare;                 ///< empty, with the memory of a piece that was read
    bool finished = false;             ///< the worker adds no more
    bool closing = false;              ///< the caller wants no more
    piece current{0, {}, true, false}; ///< the caller's alone, like `place`
    std::size_t place = 0;             ///< in the bytes of `current`
    basic::thread worker;
};

harbor6_status harbor6_pass_open(harbor6_archive* archive, size_t first, harbor6_pass** pass) {
    *pass = nullptr;
    std::unique_ptr<harbor6_pass> made;
    const auto code = c_interface::guarded(archive, [&] {
        if (first > harbor6_count(archive)) {
            c_interface::keep(*archive, HARBOR6_NO_ENTRY, "no entry of that number");
            return;
        }
        made = std::make_unique<harbor6_pass>(archive, first);
    });
    if (!made)
        return code;
    archive->busy = true; // from here on its status is the worker's
    try {
        made->worker.start(made.get());
    } catch (...) {
        archive->busy = false;
        return c_interface::keep_in_flight(*archive);
    }
    *pass = made.release();
    return HARBOR6_OK;
}

int harbor6_pass_next(harbor6_pass* pass, size_t* entry) {
    std::unique_lock lock(pass->mutex);
    do {
        const bool between = pass->current.last;
        if (!pass->take(lock, shortest_piece)) {
            pass->current = {0, {}, true, false};
            pass->place = 0;
            return 0;
        }
        if (between)
            break;
    } while (true);
    *entry = pass->current.entry;
    return 1;
}

int64_t harbor6_pass_read(harbor6_pass* pass, void* buffer, size_t length) {
    auto* to = static_cast<char*>(buffer);
    std::size_t done = 0;
    while (done < length) {
        auto& from = pass->current;
        if (pass->place == from.bytes.size()) {
            if (from.last)
                return done > 0 || from.complete ? static_cast<int64_t>(done) : -1;
            std::unique_lock lock(pass->mutex);
            if (length - done >= shortest_piece)
                done += pass->read_directly(lock, to + done, length - done);
            if (done < length && !pass->take(lock, longest_piece)) {
                from = {0, {}, true, false};
                pass->place = 0;
            }
            continue;
        }
        const auto count = std::min(length - done, from.bytes.size() - pass->place);
        std::memcpy(to + done, from.bytes.data() + pass->place, count);
        pass->place += count;
        done += count;
    }
    return static_cast<int64_t>(done);
}

harbor6_status harbor6_pass_close(harbor6_pass* pass) {
    if (!pass)
        return HARBOR6_OK;
    {
        const std::lock_guard lock(pass->mutex);
        pass->closing = true;
        pass->changed.notify_all();
    }
    pass->worker.join();
    auto* const archive = pass->archive;
    archive->busy = false;
    delete pass;
    return harbor6_error_code(archive);
}

namespace {

/// Searches what `open` makes.
template<class Open>
harbor6_status find(const harbor6_formats* formats, Open open, void* context,
                    int (*report)(void* context, const harbor6_found* found)) noexcept {
    try {
        harbor6::ClientInterface unused;
        const host::Registry own(unused, formats->registry);
        const std::unique_ptr<stream::input> bytes = open();
        harbor6::ArchiveFinder finder(own.classifier, *bytes);
        for (harbor6::FoundArchive found; finder.next(found);) {
            const auto name = found.format->string(harbor6::key::formatName);
            const harbor6_found told = {name.c_str(), found.offset, found.size, found.cut ? 1 : 0};
            if (report(context, &told) != 0)
                throw aborted();
        }
        return finder.passedOver() ? HARBOR6_INCOMPLETE : HARBOR6_OK;
    } catch (...) {
        return c_interface::status_in_flight();
    }
}

} // namespace

harbor6_status harbor6_find(const harbor6_formats* formats, int descriptor, void* context,
                            int (*report)(void* context, const harbor6_found* found)) {
    const auto open = [descriptor] {
        return std::make_unique<host::file_input>(host::duplicate_descriptor(descriptor), "the file");
    };
    return find(formats, open, context, report);
}

harbor6_status harbor6_find_source(const harbor6_formats* formats, const harbor6_source* source,
                                   void* context, int (*report)(void* context, const harbor6_found* found)) {
    return find(
        formats, [source] { return c_interface::supplied(*source); }, context, report);
}

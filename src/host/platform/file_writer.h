#pragma once

#include "host/platform/directory_tree.h"

#include <cstdint>
#include <ctime>
#include <exception>
#include <optional>

namespace host {

/// Counts the bytes of one file and knows whether they are all. Where nobody said how many there will be,
/// they are all unless a failure is on its way through the stack that wasn't there when the count began.
class segment_watch {
public:
    void expect(std::uint64_t size) { expected = size; }
    void add(std::uint64_t bytes) { count += bytes; }
    std::uint64_t counted() const { return count; }
    bool whole() const {
        return expected ? count == *expected : std::uncaught_exceptions() <= failures_around;
    }

private:
    std::optional<std::uint64_t> expected;
    std::uint64_t count = 0;
    int failures_around = std::uncaught_exceptions();
};

/// As long as one lives, a signal that ends the program (SIGINT, SIGTERM or SIGHUP, where it isn't ignored)
/// removes the file `name` of the open folder `folder` first: a half file is not taken for a whole one, and
/// no temporary one stays. Of several the one made last counts. `name` has to stay.
class remove_on_signal {
public:
    remove_on_signal(int folder, const char* name);
    remove_on_signal(const remove_on_signal&) = delete;
    remove_on_signal& operator=(const remove_on_signal&) = delete;
    ~remove_on_signal();

private:
    const char* mine;
};

/// One file on its way to the disk, from its creation to its end. A new file is created exclusively and keeps
/// what it got if it isn't finished. With `replacing` the bytes go into a temporary file beside the old one,
/// which takes the old one's place in finish() and not before; unfinished it is removed. A signal that ends
/// the program removes either. At most one file is open at a time as long as transfers aren't kept.
class file_writer {
public:
    /// Creates the file, folders above it included. Fails as directory_tree does.
    file_writer(directory_tree& target, const std::string& folder, const std::string& name, bool replacing);
    file_writer(const file_writer&) = delete;
    file_writer& operator=(const file_writer&) = delete;
    ~file_writer();

    /// Takes all bytes, or raises and counts as failed from then on.
    void write(const char* bytes, std::size_t length);
    /// The same at a place of its own, and the file's size. These count as all that the file is to get.
    void write_at(std::uint64_t offset, const char* bytes, std::size_t length);
    void resize(std::uint64_t size);
    /// Removes what was written.
    void discard();
    /// Whether the file got all that it was to get, and no write failed.
    bool whole() const { return failure.empty() && watch.whole(); }
    /// The text of the write that failed, empty if none did.
    const std::string& failed_write() const { return failure; }

    segment_watch watch;

    /// Sets the time, closes the file, and lets it take its place. After a failure it counts as unfinished.
    void finish(const std::optional<std::time_t>& modified);

private:
    [[noreturn]] void fail(int error);

    std::string path; ///< for messages
    std::shared_ptr<const file_descriptor> folder;
    std::string name;
    std::string temporary; ///< empty for a new file
    file_descriptor file;
    std::optional<remove_on_signal> unfinished;
    std::string failure;
};

} // namespace host

#pragma once

#include "host/platform/directory_tree.h"

#include <cstdint>
#include <ctime>
#include <optional>
#include <string_view>

namespace host {

/// While one lives, a signal that ends the process (SIGINT, SIGTERM or SIGHUP, unless ignored) first removes
/// the file `name` of the open folder `folder`, so that no partial or temporary file is left. If several
/// live, the one made last counts. `name` must stay valid.
class remove_on_signal {
public:
    remove_on_signal(int folder, const char* name);
    remove_on_signal(const remove_on_signal&) = delete;
    remove_on_signal& operator=(const remove_on_signal&) = delete;
    ~remove_on_signal();

private:
    const char* mine;
};

/// Writes one file of a directory_tree. A new file is created exclusively and keeps what was written even
/// without finish(). With `replacing` the bytes go into a temporary file in the same folder, which replaces
/// the old file in finish() and not before; without finish() it is removed. A signal that ends the process
/// removes either. One thread.
class file_writer {
public:
    /// Creates the file and the folders above it. Fails as directory_tree does.
    file_writer(directory_tree& target, const std::string& folder, const std::string& name, bool replacing);
    file_writer(const file_writer&) = delete;
    file_writer& operator=(const file_writer&) = delete;
    ~file_writer();

    /// Writes all bytes behind those of the last write, or raises fs::Exception; failure() then has the
    /// cause.
    void write(std::string_view bytes);
    /// The same at the place `offset` of the file.
    void write_at(std::uint64_t offset, std::string_view bytes);
    void resize(std::uint64_t size);
    /// Bytes from the start of the file to the last one written.
    std::uint64_t size() const { return extent; }
    /// The cause of the write that failed, empty if none did.
    const std::string& failure() const { return cause; }

    /// Removes what was written.
    void discard();
    /// Sets the time, closes the file and puts it under its name. Raises fs::Exception; the file then counts
    /// as unfinished.
    void finish(const std::optional<std::time_t>& modified);

private:
    [[noreturn]] void fail(int error);

    std::string path; ///< for messages
    std::shared_ptr<const file_descriptor> folder;
    std::string name;
    std::string temporary; ///< empty for a new file
    file_descriptor file;
    std::optional<remove_on_signal> unfinished;
    std::uint64_t end = 0; ///< of the last write()
    std::uint64_t extent = 0;
    std::string cause;
};

} // namespace host

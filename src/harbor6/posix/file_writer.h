#pragma once

#include "harbor6/posix/directory_tree.h"
#include "harbor6/posix/temporary_files.h"

#include <cstdint>
#include <ctime>
#include <exception>
#include <optional>
#include <string_view>

namespace host {

/// What is added to the usual permissions of a new file.
struct file_permissions {
    bool read_only = false;
    bool executable = false;
};

/// Writes one file of a directory_tree, which outlives it. The file gets its name once it is complete, in one
/// step; until then it has none or a temporary one, so that a signal or a kill leaves no part of it. Without
/// finish() nothing is left, or "NAME.partial" if the tree keeps that, and an existing file stays as it was.
/// One thread.
///
///                descriptor   name
///   writing      open         none or temporary
///   set aside    closed       temporary
///   in place     closed       its own
class file_writer {
public:
    /// Makes the file and the folders above it. With `replacing` an existing plain file of that name is
    /// replaced, unless it was made in this tree too; its permission bits are kept, and its owner and group
    /// where that is permitted. Fails as directory_tree does. If something else has the name,
    /// that comes to light when the file gets it.
    file_writer(directory_tree& target, std::string folder, std::string name, bool replacing);
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

    /// Sets the time that the file gets. Returns false once the descriptor is closed.
    bool set_time(std::time_t modified);
    void set_permissions(const file_permissions& chosen) { permissions = chosen; }
    /// Closes the descriptor. A file that is `whole` is put in place, else it is set aside. Nothing if that
    /// has happened already. finish() raises what fails.
    void release(bool whole) noexcept;
    /// Puts the file in place. Raises fs::Exception; the file then counts as unfinished.
    void finish();
    /// Removes what was written.
    void discard();

private:
    [[noreturn]] void fail(int error);
    [[noreturn]] void fail_to_create(int error);
    std::string path() const { return join_path(folder_path, name); }
    bool make_unnamed();
    void make_temporary();
    void apply_attributes();
    void close();
    void name_temporarily();
    bool try_to_place();
    void keep_unfinished();
    void place();
    void place_by_replacing();

    directory_tree& tree;
    const std::string folder_path;
    const std::string name;
    const bool replaces;
    std::shared_ptr<const file_descriptor> folder; ///< null while the file is set aside or in place
    file_descriptor file;
    temporary_name temporary;
    bool in_place = false;
    std::optional<std::time_t> time;
    file_permissions permissions;
    std::uint64_t end = 0; ///< of the last write()
    std::uint64_t extent = 0;
    std::string cause;
    std::exception_ptr obstacle; ///< why release() didn't do all
};

} // namespace host

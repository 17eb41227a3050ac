#include "host/platform/file_writer.h"

#include "host/platform/system_error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

constexpr int write_flags = O_WRONLY | O_CLOEXEC;
constexpr mode_t permission_bits = 0777;

/// The place through which an open file without a name gets one.
std::string link_to(const file_descriptor& file) {
    return "/proc/self/fd/" + std::to_string(file.get());
}

} // namespace

file_writer::file_writer(directory_tree& target, std::string folder_to, std::string file_name, bool replacing)
    : tree(target), folder_path(std::move(folder_to)), name(std::move(file_name)), replaces(replacing),
      folder(target.make_folder(folder_path)), temporary(target, folder_path) {
    if (!replaces && tree.look_up(folder_path, name) != entry_kind::none)
        throw_system_error("create", path(), EEXIST);
    if (!make_unnamed())
        make_temporary();
}

/// Returns false if the file system has no files without a name, or can't give them one.
bool file_writer::make_unnamed() {
    const auto open_unnamed = [this] {
        return file_descriptor(openat(folder->get(), ".", write_flags | O_TMPFILE, 0666));
    };
    if (!tree.unnamed_files)
        return false;
    file = open_unnamed();
    if (!file && errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOSYS)
        throw_system_error("create", path(), errno);
    if (file && !tree.unnamed_files_tested) {
        // A file that had a name and lost it can't get another, so the first one only serves the test.
        const temporary_name::step one_step;
        const auto name_to_test = new_temporary_name();
        if (linkat(AT_FDCWD, link_to(file).c_str(), folder->get(), name_to_test.c_str(), AT_SYMLINK_FOLLOW) ==
            0) {
            unlinkat(folder->get(), name_to_test.c_str(), 0);
            file = open_unnamed();
        } else {
            file = file_descriptor();
        }
        tree.unnamed_files_tested = true;
    }
    tree.unnamed_files = static_cast<bool>(file);
    return tree.unnamed_files;
}

void file_writer::make_temporary() {
    // What replaces a file is no more readable than that one may be.
    const mode_t mode = replaces && tree.look_up(folder_path, name) == entry_kind::file ? 0600 : 0666;
    const temporary_name::step one_step;
    std::string made;
    do {
        made = new_temporary_name();
        file = file_descriptor(
            openat(folder->get(), made.c_str(), write_flags | O_CREAT | O_EXCL | O_NOFOLLOW, mode));
    } while (!file && errno == EEXIST);
    if (!file)
        throw_system_error("create", path(), errno);
    flock(file.get(), LOCK_EX); // while it is locked, no other process takes it for abandoned
    temporary.set(made);
}

file_writer::~file_writer() {
    release(false);
    if (in_place || temporary.empty())
        return;
    try {
        if (!folder)
            folder = tree.make_folder(folder_path);
        const temporary_name::step one_step;
        if (!try_to_place())
            unlinkat(folder->get(), temporary.c_str(), 0);
        temporary.clear();
    } catch (const std::exception&) {
        // The file was never reported as complete.
    }
}

void file_writer::write(std::string_view bytes) {
    write_at(end, bytes);
    end += bytes.size();
}

void file_writer::write_at(std::uint64_t offset, std::string_view bytes) {
    const auto result = write_all(file.get(), bytes, offset);
    extent = std::max(extent, offset + result.written);
    if (result.error != 0)
        fail(result.error);
}

void file_writer::resize(std::uint64_t size) {
    if (ftruncate(file.get(), static_cast<off_t>(size)) != 0)
        fail(errno);
    extent = size;
}

void file_writer::fail(int error) {
    cause = error_text(error);
    throw_system_error("write", path(), error);
}

bool file_writer::set_time(std::time_t modified) {
    if (file)
        time = modified;
    return static_cast<bool>(file);
}

void file_writer::release(bool whole) noexcept {
    if (!file)
        return;
    try {
        apply_attributes();
        if (!whole && temporary.empty()) {
            const temporary_name::step one_step;
            name_temporarily();
        }
        if (!temporary.empty())
            close(); // may be the first to say that the data can't be stored
        if (whole)
            place();
        close();
    } catch (...) {
        obstacle = std::current_exception();
        file.close();
    }
    folder.reset();
}

void file_writer::finish() {
    release(true);
    if (obstacle)
        std::rethrow_exception(obstacle);
    if (in_place)
        return;
    folder = tree.make_folder(folder_path);
    place();
    folder.reset();
}

void file_writer::discard() {
    release(false);
    if (in_place)
        tree.remove_file(folder_path, name);
    else if (!temporary.empty())
        temporary.remove();
    in_place = false;
    const temporary_name::step one_step;
    temporary.clear();
}

void file_writer::apply_attributes() {
    struct stat old = {};
    if (replaces && fstatat(folder->get(), name.c_str(), &old, AT_SYMLINK_NOFOLLOW) == 0 &&
        S_ISREG(old.st_mode)) {
        // Not every user may set an owner or a group; both are tried, the permissions come last.
        if (fchown(file.get(), old.st_uid, old.st_gid) != 0 &&
            fchown(file.get(), static_cast<uid_t>(-1), old.st_gid) != 0)
            errno = 0;
        if (fchmod(file.get(), old.st_mode & permission_bits) != 0)
            throw_system_error("set the permissions of", path(), errno);
    }
    if (time) {
        const timespec times[2] = {{0, UTIME_OMIT}, {*time, 0}};
        if (futimens(file.get(), times) != 0)
            throw_system_error("set the time of", path(), errno);
    }
    if (tree.syncs && fsync(file.get()) != 0)
        fail(errno);
}

void file_writer::close() {
    if (const int error = file.close())
        fail(error);
}

/// Gives a file without a name a temporary one. Within a step.
void file_writer::name_temporarily() {
    flock(file.get(), LOCK_EX);
    std::string chosen;
    int error = 0;
    do {
        chosen = new_temporary_name();
        error = linkat(AT_FDCWD, link_to(file).c_str(), folder->get(), chosen.c_str(), AT_SYMLINK_FOLLOW) == 0
                    ? 0
                    : errno;
    } while (error == EEXIST);
    if (error != 0)
        throw_system_error("create", path(), error);
    temporary.set(chosen);
}

/// Where neither a rename that replaces nothing nor a link exists: an empty file takes the name first.
bool file_writer::reserve_and_rename() {
    const int to = folder->get();
    const file_descriptor reserved(
        openat(to, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (!reserved)
        return false;
    if (renameat(to, temporary.c_str(), to, name.c_str()) == 0)
        return true;
    const int error = errno;
    unlinkat(to, name.c_str(), 0);
    errno = error;
    return false;
}

/// Puts the file under its name if nothing else has it; errno tells why not. Within a step.
bool file_writer::try_to_place() {
    const int to = folder->get();
    if (temporary.empty()) {
        in_place = linkat(AT_FDCWD, link_to(file).c_str(), to, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
        return in_place;
    }
    in_place = renameat2(to, temporary.c_str(), to, name.c_str(), RENAME_NOREPLACE) == 0;
    if (!in_place && (errno == EINVAL || errno == ENOSYS)) { // the file system can't do that in one step
        in_place = linkat(to, temporary.c_str(), to, name.c_str(), 0) == 0;
        if (in_place)
            unlinkat(to, temporary.c_str(), 0);
        else if (errno != EEXIST)
            in_place = reserve_and_rename();
    }
    if (in_place)
        temporary.clear();
    return in_place;
}

void file_writer::place() {
    {
        const temporary_name::step one_step;
        if (!try_to_place()) {
            if (errno != EEXIST || !replaces)
                throw_system_error("create", path(), errno);
            place_by_replacing();
        }
    }
    tree.note_made(folder_path, name);
}

/// Within a step.
void file_writer::place_by_replacing() {
    if (tree.was_made(folder_path, name))
        throw path_error("another file of the archive has that name", "host::file_writer");
    if (tree.look_up(folder_path, name) != entry_kind::file)
        throw_system_error("replace", path(), EEXIST);
    if (temporary.empty())
        name_temporarily();
    if (renameat(folder->get(), temporary.c_str(), folder->get(), name.c_str()) != 0)
        throw_system_error("replace", path(), errno);
    temporary.clear();
    in_place = true;
}

} // namespace host

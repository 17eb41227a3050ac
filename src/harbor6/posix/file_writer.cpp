#include "harbor6/posix/file_writer.h"

#include "harbor6/posix/system_error.h"

#include <algorithm>
#include <atomic>
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

/// Gives an open file without a name one. Returns false if that fails, and errno tells why.
bool link_to_name(const file_descriptor& file, int folder, const char* name) {
    // Linux before 6.10 lets only some users link a file by its descriptor.
    static std::atomic<bool> by_descriptor = true;
    if (by_descriptor.load(std::memory_order_relaxed)) {
        if (linkat(file.get(), "", folder, name, AT_EMPTY_PATH) == 0)
            return true;
        if (errno != ENOENT)
            return false;
        by_descriptor.store(false, std::memory_order_relaxed);
    }
    const auto path = "/proc/self/fd/" + std::to_string(file.get());
    return linkat(AT_FDCWD, path.c_str(), folder, name, AT_SYMLINK_FOLLOW) == 0;
}

} // namespace

file_writer::file_writer(directory_tree& target, std::string folder_to, std::string file_name, bool replacing)
    : tree(target), folder_path(std::move(folder_to)), name(std::move(file_name)), replaces(replacing),
      folder(target.make_folder(folder_path)), temporary(target, folder_path) {
    tree.note_entry(folder_path);
    if (!make_unnamed())
        make_temporary();
}

/// Returns false if the file system has no files without a name, or can't give them one.
bool file_writer::make_unnamed() {
    const auto open_unnamed = [this] { return tree.open_at(*folder, ".", write_flags | O_TMPFILE, 0666); };
    if (!tree.unnamed_files)
        return false;
    file = open_unnamed();
    if (!file && errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL && errno != ENOSYS)
        throw_system_error("create", path(), errno);
    if (file && !tree.unnamed_files_tested) {
        // A file that had a name and lost it can't get another, so the first one only serves the test.
        const uninterrupted_step one_step;
        const auto name_to_test = new_temporary_name();
        if (link_to_name(file, folder->get(), name_to_test.c_str())) {
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
    const uninterrupted_step one_step;
    do { // the name is noted first: noting it may fail
        temporary.set(new_temporary_name());
        file = tree.open_at(*folder, temporary.c_str(), write_flags | O_CREAT | O_EXCL | O_NOFOLLOW, mode);
    } while (!file && errno == EEXIST);
    if (!file)
        fail_to_create(errno);
    flock(file.get(), LOCK_EX); // while it is locked, no other process takes it for abandoned
}

/// Nothing was created under the temporary name.
void file_writer::fail_to_create(int error) {
    temporary.clear();
    throw_system_error("create", path(), error);
}

file_writer::~file_writer() {
    release(false);
    if (in_place || temporary.empty())
        return;
    try {
        if (!folder)
            folder = tree.make_folder(folder_path);
        const uninterrupted_step one_step;
        if (tree.keeps_unfinished)
            keep_unfinished();
        unlinkat(folder->get(), temporary.c_str(), 0);
        temporary.clear();
    } catch (const std::exception&) {
        // The file was never reported as complete.
    }
}

/// Gives what was written a name that says so. Within a step.
void file_writer::keep_unfinished() {
    const int to = folder->get();
    const auto wanted = name + ".partial";
    auto free = wanted;
    const auto place = [&] {
        if (renameat2(to, temporary.c_str(), to, free.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        return (errno == EINVAL || errno == ENOSYS) &&
               linkat(to, temporary.c_str(), to, free.c_str(), 0) == 0;
    };
    for (unsigned number = 2; !place() && errno == EEXIST; ++number)
        free = std::string(wanted).append(std::to_string(number));
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
            const uninterrupted_step one_step;
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
        temporary.undo();
    in_place = false;
    const uninterrupted_step one_step;
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
    if (permissions.read_only || permissions.executable) {
        struct stat own = {};
        mode_t mode = fstat(file.get(), &own) == 0 ? own.st_mode & permission_bits : 0600;
        if (permissions.executable)
            mode |= (mode & 0444) >> 2; // for all who may read it
        if (permissions.read_only)
            mode &= ~mode_t{0222};
        if (fchmod(file.get(), mode) != 0)
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
    bool named = false;
    do {
        temporary.set(new_temporary_name());
        named = link_to_name(file, folder->get(), temporary.c_str());
    } while (!named && errno == EEXIST);
    if (!named)
        fail_to_create(errno);
}

/// Puts the file under its name if nothing else has it; errno tells why not. Within a step.
bool file_writer::try_to_place() {
    const int to = folder->get();
    if (temporary.empty()) {
        in_place = link_to_name(file, to, name.c_str());
        return in_place;
    }
    in_place = rename_without_replacing(to, temporary.c_str(), to, name.c_str());
    if (in_place)
        temporary.clear();
    return in_place;
}

void file_writer::place() {
    {
        const uninterrupted_step one_step;
        if (!try_to_place()) {
            if (errno != EEXIST || !replaces)
                throw_system_error("create", path(), errno);
            place_by_replacing();
        }
    }
    tree.note_made(folder_path, name, file);
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

#include "harbor6/posix/directory_tree.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/posix/system_error.h"
#include "harbor6/posix/temporary_files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t longest_name = 255;
constexpr std::size_t most_known_bytes = 4 * 1024 * 1024;
constexpr std::size_t bytes_beside_a_path = 160; ///< about what a known folder takes
constexpr int folder_flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;

/// Raises `error`, and says so if a file or a link exists where a folder is needed.
[[noreturn]] void fail_on_folder(int parent, const char* leaf, const std::string& folder, int error) {
    struct stat status = {};
    if ((error == ENOTDIR || error == ELOOP) && fstatat(parent, leaf, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
        !S_ISDIR(status.st_mode))
        throw path_error("cannot use folder " + nio::printable(folder) + ": " +
                             (S_ISLNK(status.st_mode) ? "it is a symbolic link" : "it is a file"),
                         "host::directory_tree");
    throw_system_error("use folder", folder, error);
}

} // namespace

bool rename_without_replacing(int from_folder, const char* from, int to_folder, const char* to) {
    if (renameat2(from_folder, from, to_folder, to, RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    // The file system can't do that in one step: where it has no links either, an empty object takes the name
    // first.
    struct stat status = {};
    if (fstatat(from_folder, from, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    const bool is_folder = S_ISDIR(status.st_mode);
    if (!is_folder && linkat(from_folder, from, to_folder, to, 0) == 0) {
        unlinkat(from_folder, from, 0);
        return true;
    }
    if (!is_folder && errno == EEXIST)
        return false;
    if (is_folder ? mkdirat(to_folder, to, 0700) != 0
                  : !file_descriptor(
                        openat(to_folder, to, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600)))
        return false;
    if (renameat(from_folder, from, to_folder, to) == 0)
        return true;
    const int error = errno;
    unlinkat(to_folder, to, is_folder ? AT_REMOVEDIR : 0);
    errno = error;
    return false;
}

directory_tree::directory_tree(std::string path, bool follow)
    : root_path(std::move(path)), follow_root(follow) {}

std::string join_path(const std::string& folder, const std::string& name) {
    return folder.empty() ? name : folder + '/' + name;
}

std::string name_fault(const std::string& name) {
    if (name.empty())
        return "its name is empty";
    if (name == "." || name == ".." || is_temporary_name(name))
        return "its name is reserved";
    if (name.find('\0') != name.npos || name.find('/') != name.npos)
        return "its name contains a character that is not allowed in file names";
    if (name.size() > longest_name)
        return "its name is too long";
    return {};
}

/// Without the top nothing can be written: that is no path_error.
void directory_tree::fail_on_root(int error) const {
    try {
        fail_on_folder(AT_FDCWD, root_path.c_str(), root_path, error);
    } catch (const path_error& obstacle) {
        throw fs::Exception(obstacle.message(), "host::directory_tree");
    }
}

/// Creates the top and missing folders above it.
void directory_tree::make_root() {
    std::error_code error;
    auto above = std::filesystem::path(root_path).lexically_normal();
    do
        above = above.has_parent_path() && above.parent_path() != above ? above.parent_path() : ".";
    while (above != "." && !std::filesystem::exists(above, error));
    above_root = above.string();
    root_empty = std::filesystem::create_directories(root_path, error);
    if (error)
        throw fs::Exception("cannot create folder " + nio::printable(root_path) + ": " +
                                error_text(error.value()),
                            "host::directory_tree");
}

directory_tree::handle directory_tree::open_root(if_missing policy) {
    if (root)
        return root;
    const int flags = folder_flags | (follow_root ? 0 : O_NOFOLLOW);
    file_descriptor opened(::open(root_path.c_str(), flags));
    if (!opened && errno == ENOENT) {
        if (policy == if_missing::return_null)
            return nullptr;
        make_root();
        opened = file_descriptor(::open(root_path.c_str(), flags));
    }
    if (!opened)
        fail_on_root(errno);
    root = std::make_shared<const file_descriptor>(std::move(opened));
    return root;
}

/// Opens `folder`, or returns none with errno ENOENT if it doesn't exist and isn't to be created.
file_descriptor directory_tree::open_child(const file_descriptor& parent, const std::string& folder,
                                           if_missing policy, bool& created) {
    const auto leaf = nio::leaf(folder, '/');
    if (const auto reason = name_fault(leaf); !reason.empty())
        throw path_error("cannot use folder " + nio::printable(folder) + ": " + reason,
                         "host::directory_tree");
    auto opened = open_at(parent, leaf.c_str(), folder_flags | O_NOFOLLOW);
    if (!opened && errno == ENOENT) {
        if (policy == if_missing::return_null)
            return opened;
        created = mkdirat(parent.get(), leaf.c_str(), 0777) == 0;
        if (!created && errno != EEXIST)
            throw_system_error("create folder", folder, errno);
        opened = open_at(parent, leaf.c_str(), folder_flags | O_NOFOLLOW);
    }
    if (!opened)
        fail_on_folder(parent.get(), leaf.c_str(), folder, errno);
    return opened;
}

/// None if that is impossible for any reason: the walk finds out which.
file_descriptor directory_tree::open_in_one_call(const std::string& folder) const {
    static std::atomic<bool> available = true;
    if (!root || !available.load(std::memory_order_relaxed))
        return {};
    for (std::size_t begin = 0, end = 0; end != folder.npos; begin = end + 1) {
        end = folder.find('/', begin);
        if (!name_fault(folder.substr(begin, end == folder.npos ? end : end - begin)).empty())
            return {};
    }
    open_how how = {};
    how.flags = folder_flags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS;
    file_descriptor opened(
        static_cast<int>(syscall(SYS_openat2, root->get(), folder.c_str(), &how, sizeof how)));
    if (!opened && (errno == ENOSYS || errno == EPERM))
        available.store(false, std::memory_order_relaxed);
    return opened;
}

file_descriptor directory_tree::open_at(const file_descriptor& folder, const char* name, int flags,
                                        unsigned mode) {
    file_descriptor opened(openat(folder.get(), name, flags, mode));
    while (!opened && errno == EMFILE && recent.size() > 1) {
        most_open_folders = recent.size() / 2;
        close_surplus(most_open_folders);
        opened = file_descriptor(openat(folder.get(), name, flags, mode));
    }
    return opened;
}

/// Closes the folders used least recently, so that at most `left` stay open.
void directory_tree::close_surplus(std::size_t left) {
    while (recent.size() > left) {
        open_folders.erase(recent.back().path);
        recent.pop_back();
    }
}

/// The open folder, which then is the first of `recent`; null if it isn't open.
directory_tree::handle directory_tree::find_open(const std::string& folder) {
    const auto found = open_folders.find(folder);
    if (found == open_folders.end())
        return nullptr;
    recent.splice(recent.begin(), recent, found->second);
    return recent.front().descriptor;
}

void directory_tree::keep_open(const std::string& folder, handle opened) {
    close_surplus(most_open_folders - 1);
    recent.push_front({folder, std::move(opened)});
    open_folders.emplace(recent.front().path, recent.begin());
}

directory_tree::known_folder* directory_tree::find_known(const std::string& folder) {
    const auto found = known.find(folder);
    return found == known.end() ? nullptr : &found->second;
}

/// Nothing where too many are known already.
void directory_tree::remember(const std::string& folder, bool created) {
    const auto bytes = folder.size() + bytes_beside_a_path;
    if (find_known(folder) || known_bytes + bytes > most_known_bytes)
        return;
    known_bytes += bytes;
    auto path = std::make_shared<const std::string>(folder);
    const std::string_view text = *path;
    known.emplace(text, known_folder{std::move(path), false, created});
}

/// Goes up to a folder that can be opened, and from there down again; archives can state paths of any depth,
/// so not by recursion.
directory_tree::handle directory_tree::open(const std::string& folder, if_missing policy) {
    handle opened;
    auto at = folder;
    for (auto above = nio::stem(at, '/'); !at.empty(); at = above, above = nio::stem(at, '/')) {
        if ((opened = find_open(at)))
            break;
        if (above.empty() || open_folders.contains(above))
            continue;
        if (auto found = open_in_one_call(at)) {
            opened = std::make_shared<const file_descriptor>(std::move(found));
            keep_open(at, opened);
            remember(at, false);
            break;
        }
    }
    if (at.empty())
        opened = open_root(policy);
    while (opened && at.size() < folder.size()) {
        const auto above = at;
        at = folder.substr(0, folder.find('/', at.empty() ? 0 : at.size() + 1));
        bool created = false;
        auto child = open_child(*opened, at, policy, created);
        if (!child)
            return nullptr;
        if (created)
            note_entry(above);
        opened = std::make_shared<const file_descriptor>(std::move(child));
        keep_open(at, opened);
        remember(at, created);
    }
    return opened;
}

void directory_tree::note_entry(const std::string& folder) {
    if (folder.empty())
        root_empty = false;
    else if (auto* const found = find_known(folder))
        found->empty = false;
}

entry_kind directory_tree::look_up(const std::string& folder, const std::string& name) {
    const auto* const state = find_known(folder);
    if (folder.empty() ? root_empty : state && state->empty)
        return entry_kind::none;
    const auto parent = open(folder, if_missing::return_null);
    struct stat status = {};
    if (!parent)
        return entry_kind::none;
    if (fstatat(parent->get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        if (errno == ENOENT)
            return entry_kind::none;
        throw_system_error("look at", join_path(folder, name), errno);
    }
    return S_ISREG(status.st_mode)   ? entry_kind::file
           : S_ISDIR(status.st_mode) ? entry_kind::folder
                                     : entry_kind::other;
}

std::vector<std::string> directory_tree::names(const std::string& folder) {
    std::vector<std::string> found;
    const auto opened = open(folder, if_missing::return_null);
    if (!opened)
        return found;
    // readdir moves the position of its descriptor, so it gets one of its own.
    file_descriptor reading(openat(opened->get(), ".", folder_flags));
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(reading ? fdopendir(reading.get()) : nullptr, closedir);
    if (!entries)
        throw_system_error("read folder", folder, errno);
    reading.release();
    while (const dirent* const entry = readdir(entries.get()))
        if (const std::string name = entry->d_name; name != "." && name != "..")
            found.push_back(name);
    std::sort(found.begin(), found.end());
    return found;
}

std::optional<fs::Spec> directory_tree::identity(const std::string& folder, const std::string& name) {
    const auto parent = open(folder, if_missing::return_null);
    struct stat status = {};
    if (!parent || fstatat(parent->get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW | AT_EMPTY_PATH) != 0)
        return std::nullopt;
    fs::Spec which;
    which.device = status.st_dev;
    which.node = status.st_ino;
    return which;
}

std::optional<std::time_t> directory_tree::modified(const std::string& folder, const std::string& name) {
    const auto parent = open(folder, if_missing::return_null);
    struct stat status = {};
    if (!parent || fstatat(parent->get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return status.st_mtime;
}

file_descriptor directory_tree::open_file(const std::string& folder, const std::string& name) {
    const auto parent = open(folder, if_missing::return_null);
    file_descriptor file(parent ? openat(parent->get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC)
                                : -1);
    if (!file)
        throw_system_error("read", join_path(folder, name), parent ? errno : ENOENT);
    return file;
}

void directory_tree::rename(const std::string& from, const std::string& to, bool replace) {
    const auto source = open(nio::stem(from, '/'), if_missing::return_null);
    const auto destination = make_folder(nio::stem(to, '/'));
    const auto old_name = nio::leaf(from, '/');
    const auto new_name = nio::leaf(to, '/');
    if (!source)
        throw_system_error("rename", from, ENOENT);
    const int from_folder = source->get(), to_folder = destination->get();
    note_entry(nio::stem(to, '/'));
    if (replace ? renameat(from_folder, old_name.c_str(), to_folder, new_name.c_str()) != 0
                : !rename_without_replacing(from_folder, old_name.c_str(), to_folder, new_name.c_str()))
        throw_system_error("rename", from, errno);
    forget(from);
    // A folder takes along what was written to those in it.
    const std::set<std::string> written_to(to_be_synced.lower_bound(from),
                                           to_be_synced.lower_bound(from + '0'));
    for (const auto& path : written_to)
        if (path == from || path.starts_with(from + '/'))
            to_be_synced.insert(to + path.substr(from.size()));
}

void directory_tree::remove_file(const std::string& folder, const std::string& name) {
    const auto parent = open(folder, if_missing::return_null);
    const auto removed = made.empty() ? std::nullopt : object_at(folder, name);
    if (!parent || unlinkat(parent->get(), name.c_str(), 0) != 0)
        throw_system_error("remove", join_path(folder, name), parent ? errno : ENOENT);
    if (removed)
        made.erase(*removed);
}

void directory_tree::remove_folder(const std::string& folder) {
    const auto parent = open(nio::stem(folder, '/'), if_missing::return_null);
    if (!parent || unlinkat(parent->get(), nio::leaf(folder, '/').c_str(), AT_REMOVEDIR) != 0)
        throw_system_error("remove folder", folder, parent ? errno : ENOENT);
    forget(folder);
}

/// Closes a folder that was renamed or removed, and all folders below it.
void directory_tree::forget(const std::string& folder) {
    std::erase_if(known, [&](const auto& each) {
        const bool concerned = each.first == folder || each.first.starts_with(folder + '/');
        known_bytes -= concerned ? each.first.size() + bytes_beside_a_path : 0;
        return concerned;
    });
    for (auto entry = recent.begin(); entry != recent.end();) {
        const auto here = entry++;
        if (here->path == folder || here->path.starts_with(folder + '/')) {
            open_folders.erase(here->path);
            recent.erase(here);
        }
    }
}

std::shared_ptr<const file_descriptor> directory_tree::make_folder(const std::string& folder) {
    auto opened = open(folder, if_missing::create);
    auto* const state = find_known(folder);
    if (folder.empty() ? root_written : state && state->written)
        return opened;
    prepare_to_write(folder, *opened, folder.empty() ? root_empty : state && state->empty);
    if (state)
        state->written = true;
    root_written = root_written || folder.empty();
    return opened;
}

void directory_tree::prepare_to_write(const std::string& folder, const file_descriptor& opened, bool empty) {
    struct stat status = {};
    if (fstat(opened.get(), &status) == 0 && written.emplace(status.st_dev, status.st_ino).second && !empty)
        remove_abandoned_files(opened.get());
    // Folders above it may be new too.
    for (auto path = folder; syncs && to_be_synced.insert(path).second && !path.empty();)
        path = nio::stem(path, '/');
}

bool directory_tree::is_known(const std::string& folder) const {
    return folder.empty() ? root != nullptr : known.contains(folder) || open_folders.contains(folder);
}

std::shared_ptr<const std::string> directory_tree::intern(const std::string& folder) const {
    if (const auto found = known.find(folder); found != known.end())
        return found->second.path;
    return std::make_shared<const std::string>(folder);
}

std::optional<directory_tree::object> directory_tree::object_at(const std::string& folder,
                                                                const std::string& name) {
    const auto found = identity(folder, name);
    return found ? std::optional(object(found->device, found->node)) : std::nullopt;
}

void directory_tree::note_made(const std::string& folder, const std::string& name,
                               const file_descriptor& file) {
    struct stat status = {};
    if (file && fstat(file.get(), &status) == 0)
        made.insert(object(status.st_dev, status.st_ino), name);
    else if (const auto found = object_at(folder, name))
        made.insert(*found, name);
}

bool directory_tree::was_made(const std::string& folder, const std::string& name) {
    const auto file = made.empty() ? std::nullopt : object_at(folder, name);
    const auto made_as = file ? made.name_of(*file) : std::nullopt;
    // The number of a file that another process replaced may be in use again, for any file.
    return made_as && (*made_as == name || object_at(folder, *made_as) == file);
}

void directory_tree::sync_folders() {
    const auto sync = [](const file_descriptor& folder, const std::string& path) {
        if (!folder || fsync(folder.get()) != 0)
            throw_system_error("write folder", path, errno);
    };
    for (auto path = to_be_synced.rbegin(); path != to_be_synced.rend(); ++path)
        if (const auto folder = open(*path, if_missing::return_null))
            sync(*folder, path->empty() ? root_path : *path);
    if (above_root.empty() || to_be_synced.empty())
        return;
    auto above = std::filesystem::path(root_path).lexically_normal();
    do {
        above = above.has_parent_path() && above.parent_path() != above ? above.parent_path() : ".";
        sync(file_descriptor(::open(above.c_str(), folder_flags)), above.string());
    } while (above != above_root);
}

} // namespace host

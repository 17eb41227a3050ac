#include "host/platform/directory_tree.h"

#include "harbor6/groundwork/text.h"
#include "host/platform/system_error.h"
#include "host/platform/temporary_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace host {

namespace {

constexpr std::size_t most_open_folders = 16;
constexpr std::size_t longest_name = 255;
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
    std::filesystem::create_directories(root_path, error);
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

directory_tree::handle directory_tree::open_child(const file_descriptor& parent, const std::string& folder,
                                                  if_missing policy) {
    const auto leaf = nio::leaf(folder, '/');
    if (const auto reason = name_fault(leaf); !reason.empty())
        throw path_error("cannot use folder " + nio::printable(folder) + ": " + reason,
                         "host::directory_tree");
    file_descriptor opened(openat(parent.get(), leaf.c_str(), folder_flags | O_NOFOLLOW));
    if (!opened && errno == ENOENT) {
        if (policy == if_missing::return_null)
            return nullptr;
        if (mkdirat(parent.get(), leaf.c_str(), 0777) != 0 && errno != EEXIST)
            throw_system_error("create folder", folder, errno);
        opened = file_descriptor(openat(parent.get(), leaf.c_str(), folder_flags | O_NOFOLLOW));
    }
    if (!opened)
        fail_on_folder(parent.get(), leaf.c_str(), folder, errno);
    return std::make_shared<const file_descriptor>(std::move(opened));
}

directory_tree::handle directory_tree::open(const std::string& folder, if_missing policy) {
    if (folder.empty())
        return open_root(policy);
    const auto found = std::find_if(recent.begin(), recent.end(),
                                    [&](const open_folder& entry) { return *entry.path == folder; });
    if (found != recent.end()) {
        std::rotate(recent.begin(), found, found + 1);
        return recent.front().descriptor;
    }
    const auto parent = open(nio::stem(folder, '/'), policy);
    if (!parent)
        return nullptr;
    auto opened = open_child(*parent, folder, policy);
    if (!opened)
        return nullptr;
    if (recent.size() == most_open_folders)
        recent.pop_back();
    recent.insert(recent.begin(), {std::make_shared<const std::string>(folder), opened});
    return opened;
}

entry_kind directory_tree::look_up(const std::string& folder, const std::string& name) {
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
    const unsigned flags = replace ? 0 : RENAME_NOREPLACE;
    if (!source ||
        renameat2(source->get(), old_name.c_str(), destination->get(), new_name.c_str(), flags) != 0)
        throw_system_error("rename", from, source ? errno : ENOENT);
    forget(from);
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
    std::erase_if(recent, [&](const open_folder& entry) {
        return *entry.path == folder || entry.path->starts_with(folder + '/');
    });
}

std::shared_ptr<const file_descriptor> directory_tree::make_folder(const std::string& folder) {
    auto opened = open(folder, if_missing::create);
    auto& prepared = folder.empty() ? root_written : recent.front().written;
    if (!prepared)
        prepare_to_write(folder, *opened);
    prepared = true;
    return opened;
}

void directory_tree::prepare_to_write(const std::string& folder, const file_descriptor& opened) {
    struct stat status = {};
    if (fstat(opened.get(), &status) == 0 && written.emplace(status.st_dev, status.st_ino).second)
        remove_abandoned_files(opened.get());
    // Folders above it may be new too.
    for (auto path = folder; syncs && to_be_synced.insert(path).second && !path.empty();)
        path = nio::stem(path, '/');
}

bool directory_tree::is_open(const std::string& folder) const {
    return folder.empty() ? root != nullptr
                          : std::any_of(recent.begin(), recent.end(),
                                        [&](const open_folder& entry) { return *entry.path == folder; });
}

std::shared_ptr<const std::string> directory_tree::intern(const std::string& folder) const {
    for (const auto& entry : recent)
        if (*entry.path == folder)
            return entry.path;
    return std::make_shared<const std::string>(folder);
}

std::optional<directory_tree::object> directory_tree::object_at(const std::string& folder,
                                                                const std::string& name) {
    const auto found = identity(folder, name);
    return found ? std::optional(object(found->device, found->node)) : std::nullopt;
}

void directory_tree::note_made(const std::string& folder, const std::string& name) {
    if (const auto file = object_at(folder, name))
        made.insert_or_assign(*file, name);
}

bool directory_tree::was_made(const std::string& folder, const std::string& name) {
    const auto file = made.empty() ? std::nullopt : object_at(folder, name);
    const auto found = file ? made.find(*file) : made.end();
    // The number of a file that another process replaced may be in use again, for any file.
    return found != made.end() && (found->second == name || object_at(folder, found->second) == file);
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

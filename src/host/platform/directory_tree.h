#pragma once

#include "harbor6/shell/structures.h"
#include "host/platform/file_descriptor.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace host {

/// The path of `name` in `folder`, where "" is the top.
std::string join_path(const std::string& folder, const std::string& name);
/// Why `name` can't be the name of a file or folder; empty if it can.
std::string name_fault(const std::string& name);

/// What exists under a name. A symbolic link is `other`, wherever it leads.
enum class entry_kind { none, file, folder, other };

/// A folder on disk and everything below it. Folders below it are named by their path from it ("" is the
/// folder itself, "a/b" one below). Each path is resolved one component at a time from the top's own
/// descriptor, never through a symbolic link, so nothing outside can be reached. A handful of folders stays
/// open, whatever their number and depth. The top itself is opened on first use, and created by the first
/// write. In a folder that is written to, abandoned temporary files are removed first.
///
/// Every operation raises path_error for a failure that concerns one path alone, fs::Exception for others.
/// One thread.
class directory_tree {
public:
    /// With `follow` false not even the top itself may be a symbolic link.
    directory_tree(std::string path, bool follow);
    directory_tree(const directory_tree&) = delete;
    directory_tree& operator=(const directory_tree&) = delete;
    /// The same folder, with none open below it. Another thread may do that once this tree was written to.
    directory_tree reopened() const { return directory_tree(*this, root); }

    /// What exists under `name` in `folder`: one system call if the folder is open.
    entry_kind look_up(const std::string& folder, const std::string& name);
    /// The names in `folder`, sorted; none if it doesn't exist.
    std::vector<std::string> names(const std::string& folder);
    /// Which object of the file system exists under `name`, if any. An empty name means `folder`.
    std::optional<fs::Spec> identity(const std::string& folder, const std::string& name);
    /// Opens a file for reading; fails on a symbolic link.
    file_descriptor open_file(const std::string& folder, const std::string& name);
    /// Moves `from` to the path `to`. An existing entry there is a failure unless `replace`.
    void rename(const std::string& from, const std::string& to, bool replace);
    void remove_file(const std::string& folder, const std::string& name);
    /// Removes an empty folder.
    void remove_folder(const std::string& folder);
    /// Opens `folder`, creating it and missing folders above it.
    std::shared_ptr<const file_descriptor> make_folder(const std::string& folder);
    /// Whether the folder is open, and so exists.
    bool is_open(const std::string& folder) const;
    /// The text of `folder`, shared with the open folder of that path if there is one: saves memory where
    /// many files keep the path of their folder.
    std::shared_ptr<const std::string> intern(const std::string& folder) const;

    /// Remembers that the file was made here, until it is removed here.
    void note_made(const std::string& folder, const std::string& name);
    /// Whether `name` leads to a file that was made here, in whatever spelling: file systems may have
    /// several.
    bool was_made(const std::string& folder, const std::string& name);
    /// Writes the entries of all folders that were written to, and of those made above the top, to the
    /// device. Nothing without `syncs`.
    void sync_folders();

    bool syncs = false; ///< what is written is to survive a crash of the machine
    /// Files can be made without a name and linked later. Cleared if the file system refuses that.
    bool unnamed_files = true;
    bool unnamed_files_tested = false; ///< one was linked

private:
    using handle = std::shared_ptr<const file_descriptor>;
    using object = std::pair<std::uint64_t, std::uint64_t>; ///< device and number of a file or folder
    struct open_folder {
        std::shared_ptr<const std::string> path;
        handle descriptor;
        bool written = false; ///< prepare_to_write() was called
    };
    enum class if_missing { return_null, create };

    directory_tree(const directory_tree& other, handle opened)
        : root_path(other.root_path), follow_root(other.follow_root), root(std::move(opened)) {}
    void prepare_to_write(const std::string& folder, const file_descriptor& opened);
    std::optional<object> object_at(const std::string& folder, const std::string& name);
    void make_root();

    handle open(const std::string& folder, if_missing policy);
    handle open_root(if_missing policy);
    [[noreturn]] void fail_on_root(int error) const;
    handle open_child(const file_descriptor& parent, const std::string& folder, if_missing policy);
    void forget(const std::string& folder);

    std::string root_path;
    bool follow_root;
    handle root;
    bool root_written = false;
    std::string above_root;             ///< the first folder above the top that existed before; for syncs
    std::vector<open_folder> recent;    ///< most recently used first
    std::map<object, std::string> made; ///< the names of the files
    std::set<object> written;           ///< folders, so that each is prepared once
    std::set<std::string> to_be_synced; ///< the same by their paths, with `syncs`
};

} // namespace host

#pragma once

#include "harbor6/posix/file_descriptor.h"
#include "harbor6/posix/made_files.h"
#include "harbor6/shell/structures.h"

#include <ctime>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

/// The path of `name` in `folder`, where "" is the top.
HARBOR6_API std::string join_path(const std::string& folder, const std::string& name);
/// Renames in open folders, unless `to` exists. Returns false if that fails, and errno tells why.
bool rename_without_replacing(int from_folder, const char* from, int to_folder, const char* to);
/// Why `name` can't be the name of a file or folder; empty if it can.
HARBOR6_API std::string name_fault(const std::string& name);

/// Lets SIGINT, SIGTERM, SIGHUP and SIGQUIT, unless ignored, remove the temporary files, and give a renamed
/// folder its name back, before they end the process. To be called before any other thread is started: these
/// signals are then taken by a thread of their own. Does nothing if that thread can't be started.
HARBOR6_API void remove_temporary_files_on_signals();

/// What exists under a name. A symbolic link is `other`, wherever it leads.
enum class entry_kind { none, file, folder, other };

/// A folder on disk and everything below it. Folders below it are named by their path from it ("" is the
/// folder itself, "a/b" one below). Each path is resolved one component at a time from the top's own
/// descriptor, never through a symbolic link, so nothing outside can be reached; by the kernel in one call
/// where it can. The folders used last stay open, a handful unless the host allows more. The top itself is
/// opened on first use, and created by the first write. In a folder that is written to, abandoned temporary
/// files are removed first.
///
/// Every operation raises path_error for a failure that concerns one path alone, fs::Exception for others.
/// One thread.
class HARBOR6_API directory_tree {
public:
    /// With `follow` false not even the top itself may be a symbolic link.
    directory_tree(std::string path, bool follow);
    directory_tree(const directory_tree&) = delete;
    directory_tree& operator=(const directory_tree&) = delete;
    /// The same folder, with none open below it. Another thread may do that once this tree was written to.
    directory_tree reopened() const { return directory_tree(*this, root); }

    /// What exists under `name` in `folder`: one system call if the folder is open, none if it was made here
    /// and nothing was put into it since.
    entry_kind look_up(const std::string& folder, const std::string& name);
    /// The names in `folder`, sorted; none if it doesn't exist.
    std::vector<std::string> names(const std::string& folder);
    /// Which object of the file system exists under `name`, if any. An empty name means `folder`.
    std::optional<fs::Spec> identity(const std::string& folder, const std::string& name);
    /// When the entry `name` in `folder` was last modified; empty if there is none.
    std::optional<std::time_t> modified(const std::string& folder, const std::string& name);
    /// Opens a file for reading; fails on a symbolic link.
    file_descriptor open_file(const std::string& folder, const std::string& name);
    /// Moves `from` to the path `to`. An existing entry there is a failure unless `replace`.
    void rename(const std::string& from, const std::string& to, bool replace);
    void remove_file(const std::string& folder, const std::string& name);
    /// Removes an empty folder.
    void remove_folder(const std::string& folder);
    /// Opens `folder`, creating it and missing folders above it.
    std::shared_ptr<const file_descriptor> make_folder(const std::string& folder);
    /// Whether the folder is known to exist, as it is or was open.
    bool is_known(const std::string& folder) const;
    /// The text of `folder`, shared if that folder is known: saves memory where many files keep the path of
    /// their folder.
    std::shared_ptr<const std::string> intern(const std::string& folder) const;

    /// Opens `name` in the open folder `folder`, as openat does, and closes folders that it kept open if
    /// there are too few descriptors.
    file_descriptor open_at(const file_descriptor& folder, const char* name, int flags, unsigned mode = 0);
    /// To be called before something is put into the open folder by its descriptor.
    void note_entry(const std::string& folder);
    /// Remembers that the file, which may be open, was made here, until it is removed here.
    void note_made(const std::string& folder, const std::string& name, const file_descriptor& file);
    /// Whether `name` leads to a file that was made here, in whatever spelling: file systems may have
    /// several.
    bool was_made(const std::string& folder, const std::string& name);
    /// Writes the entries of all folders that were written to, and of those made above the top, to the
    /// device. Nothing without `syncs`.
    void sync_folders();

    std::size_t most_open_folders = 16; ///< at least 1; each takes a descriptor
    bool keeps_unfinished = false;      ///< what was written of an unfinished file stays: "NAME.partial"
    bool syncs = false;                 ///< what is written is to survive a crash of the machine
    /// Files can be made without a name and linked later. Cleared if the file system refuses that.
    bool unnamed_files = true;
    bool unnamed_files_tested = false; ///< one was linked

private:
    using handle = std::shared_ptr<const file_descriptor>;
    using object = made_files::object; // or of a folder
    /// What stays of a folder when it is closed, so that opening it once more costs no more than that.
    struct known_folder {
        std::shared_ptr<const std::string> path;
        bool written = false; ///< prepare_to_write() was called
        bool empty = false;   ///< made here, and nothing was put into it since
    };
    struct open_folder {
        std::string path;
        handle descriptor;
    };
    using recent_folders = std::list<open_folder>;
    enum class if_missing { return_null, create };

    directory_tree(const directory_tree& other, handle opened)
        : root_path(other.root_path), follow_root(other.follow_root), root(std::move(opened)) {}
    void prepare_to_write(const std::string& folder, const file_descriptor& opened, bool empty);
    std::optional<object> object_at(const std::string& folder, const std::string& name);
    void make_root();

    handle find_open(const std::string& folder);
    known_folder* find_known(const std::string& folder);
    void remember(const std::string& folder, bool created);
    handle open(const std::string& folder, if_missing policy);
    file_descriptor open_in_one_call(const std::string& folder) const;
    void close_surplus(std::size_t left);
    void keep_open(const std::string& folder, handle opened);
    handle open_root(if_missing policy);
    [[noreturn]] void fail_on_root(int error) const;
    file_descriptor open_child(const file_descriptor& parent, const std::string& folder, if_missing policy,
                               bool& created);
    void forget(const std::string& folder);

    std::string root_path;
    bool follow_root;
    handle root;
    bool root_written = false;
    bool root_empty = false; ///< as in known_folder
    std::string above_root;  ///< the first folder above the top that existed before; for syncs
    recent_folders recent;   ///< most recently used first
    std::map<std::string_view, recent_folders::iterator> open_folders; ///< the same by path
    std::map<std::string_view, known_folder> known; ///< by path, as far as its memory is bounded
    std::size_t known_bytes = 0;
    made_files made;
    std::set<object> written;           ///< folders, so that each is prepared once
    std::set<std::string> to_be_synced; ///< the same by their paths, with `syncs`
};

} // namespace host

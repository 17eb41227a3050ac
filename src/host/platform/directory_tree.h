#pragma once

#include "harbor6/shell/structures.h"
#include "host/platform/file_descriptor.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace host {

/// What stands under a name. A link is a link, wherever it leads.
enum class entry_kind { none, file, folder, other };

/// The folder on disk into which an archive is expanded, and the only road to anything in it. Folders below
/// it are named by their path from it ("" is the folder itself, "a/b" one below), and every path is walked
/// one component at a time from the target's own descriptor, never through a symbolic link. A handful of
/// folders is kept open, whatever their number and depth. The target itself is opened when first needed, and
/// made when something is first written.
///
/// Every operation raises path_error for what concerns one name alone, fs::Exception for the rest. One
/// thread.
class directory_tree {
public:
    /// With `follow` false not even the target itself may be a symbolic link.
    directory_tree(std::string path, bool follow);

    /// What stands under `name` in `folder`: one system call when the folder is open.
    entry_kind look(const std::string& folder, const std::string& name);
    /// The names in `folder`, sorted; none if it isn't there.
    std::vector<std::string> names(const std::string& folder);
    /// Which object of the file system stands under `name`; nothing if none does. An empty name is `folder`.
    std::optional<fs::Spec> identity(const std::string& folder, const std::string& name);
    /// Opens a file for reading; not through a symbolic link.
    file_descriptor open_file(const std::string& folder, const std::string& name);
    /// Gives what stands under `from` a new place; what stands there already is in the way unless `replace`.
    void rename(const std::string& from, const std::string& to, bool replace);
    void remove_file(const std::string& folder, const std::string& name);
    /// Removes an empty folder.
    void remove_folder(const std::string& folder);
    /// Opens `folder`, and makes it and what is missing above it; one that stands already is fine.
    std::shared_ptr<const file_descriptor> make_folder(const std::string& folder);
    /// Whether the folder was opened a short while ago, and so exists.
    bool recently_open(const std::string& folder) const;
    /// The text of `folder`, shared with others that name the same folder where that is easily found out.
    std::shared_ptr<const std::string> intern(const std::string& folder) const;

    /// `name` in `folder` as one path from the target.
    static std::string join(const std::string& folder, const std::string& name);
    /// Why no file or folder can bear `name`; empty if one can.
    static std::string name_fault(const std::string& name);

private:
    using handle = std::shared_ptr<const file_descriptor>;
    struct open_folder {
        std::shared_ptr<const std::string> path;
        handle descriptor;
    };
    enum class missing { is_null, is_made };

    handle open(const std::string& folder, missing policy);
    handle open_root(missing policy);
    void forget(const std::string& folder);
    handle open_child(const file_descriptor& parent, const std::string& folder, missing policy);

    std::string root_path;
    bool follow_root;
    handle root;
    std::vector<open_folder> recent; ///< the one used last in front
};

} // namespace host

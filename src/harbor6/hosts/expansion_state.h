#pragma once

#include "harbor6/hosts/journal.h"
#include "harbor6/model/format.h"
#include "harbor6/posix/directory_tree.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace host {

class DiskFile;
class renamed_folder;
class write_behind;

/// `name` with a number before its suffix: "name (2).txt".
HARBOR6_API std::string numbered_name(const std::string& name, unsigned number);

/// What the folders and files on disk of one expansion share. It outlives them all. One thread.
class HARBOR6_API expansion_state {
public:
    expansion_state(directory_tree& target, harbor6::Format& plain_format, journal& reports);
    expansion_state(const expansion_state&) = delete;
    expansion_state& operator=(const expansion_state&) = delete;
    ~expansion_state();

    /// From now on large files are written on another thread: a gain where there are several processors.
    void write_on_a_thread();

    directory_tree& target;
    harbor6::Format& format; ///< of items outside any archive
    journal& log;
    bool folders_on_demand = false; ///< a folder is created with the first file in it, not before
    bool writes_nothing = false;    ///< folders are only imagined, and files only reserve their names

    unsigned leave_out = 0; ///< so many folders of each path, from the top on, are not made
    std::function<std::string(const std::string&)> change_name; ///< of each file and folder; empty: none
    bool renames_folders = false; ///< a folder whose name a file has gets a free name
    bool keeps_times = true;      ///< files get the times that the archive states
    bool keeps_attributes = true; ///< files get the attributes read-only and executable

    bool replaces_all = false; ///< a plain file that appears under the name of a new one is replaced

    /// Lets the next file replace the existing entry `name` of `folder`. Only the last call counts.
    void replace_next(const std::string& folder, const std::string& name) {
        replaceable.emplace(folder, name);
    }
    bool is_replaceable(const std::string& folder, const std::string& name) const;
    /// Whether the file may replace an existing entry; ends the permission, whatever the answer.
    bool take_replaceable(const std::string& folder, const std::string& name);

    std::string changed(const std::string& name) const { return change_name ? change_name(name) : name; }
    /// The name for the folder `name` in `parent`, where a file may have that name: the same one at each
    /// call.
    std::string folder_name(const std::string& parent, const std::string& name);

    /// From now on the folder counts as existing, with those above it, unless the result says why it couldn't
    /// be created.
    std::string imagine_folder(const std::string& folder);
    bool is_imagined(const std::string& folder) const { return imagined.contains(folder); }

    /// Reserves the path of a file that doesn't exist on disk yet, until forget(). Returns false if another
    /// file has reserved that path. The file keeps its path and stays alive meanwhile.
    bool promise(const DiskFile& file);
    void forget(const DiskFile& file);
    bool is_promised(const std::string& folder, const std::string& name) const;

private:
    friend class DiskFile;
    friend class DiskFolder;
    friend class DiskFork;

    using place = std::pair<const std::string&, const std::string&>;
    struct by_place {
        using is_transparent = void;
        static place of(const DiskFile* file);
        static place of(const place& named) { return named; }
        template<class A, class B>
        bool operator()(const A& a, const B& b) const {
            return of(a) < of(b);
        }
    };

    const std::unique_ptr<renamed_folder> renamed; ///< while the only item of a folder takes its place
    std::unique_ptr<write_behind> behind;          ///< writes large files; null if they need no thread
    std::optional<std::pair<std::string, std::string>> replaceable;
    std::map<std::pair<std::string, std::string>, std::string> renamed_folders; ///< by parent and name
    std::set<std::string> imagined;                                             ///< folders
    std::set<const DiskFile*, by_place> promised; ///< ordered: archives choose the names
};

} // namespace host

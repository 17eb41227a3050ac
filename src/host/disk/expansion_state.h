#pragma once

#include "harbor6/model/format.h"
#include "host/disk/journal.h"
#include "host/platform/directory_tree.h"

#include <optional>
#include <set>
#include <string>
#include <utility>

namespace host {

class DiskFile;

/// What the folders and files on disk of one expansion share. It outlives them all. One thread.
class expansion_state {
public:
    expansion_state(directory_tree& target_tree, harbor6::Format& plain_format, journal& reports)
        : target(target_tree), format(plain_format), log(reports) {}

    directory_tree& target;
    harbor6::Format& format; ///< of items outside any archive
    journal& log;
    bool folders_on_demand = false; ///< a folder is created with the first file in it, not before

    bool replaces_all = false; ///< a plain file that appears under the name of a new one is replaced

    /// Lets the next file replace the existing entry `name` of `folder`. Only the last call counts.
    void replace_next(const std::string& folder, const std::string& name) {
        replaceable.emplace(folder, name);
    }
    bool is_replaceable(const std::string& folder, const std::string& name) const;
    /// Whether the file may replace an existing entry; ends the permission, whatever the answer.
    bool take_replaceable(const std::string& folder, const std::string& name);

    /// Reserves the path of a file that doesn't exist on disk yet, until forget(). Returns false if another
    /// file has reserved that path. The file keeps its path and stays alive meanwhile.
    bool promise(const DiskFile& file);
    void forget(const DiskFile& file);
    bool is_promised(const std::string& folder, const std::string& name) const;

private:
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

    std::optional<std::pair<std::string, std::string>> replaceable;
    std::set<const DiskFile*, by_place> promised; ///< ordered: archives choose the names
};

} // namespace host

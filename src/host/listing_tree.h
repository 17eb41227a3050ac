#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace host {

class console;

/// The files of an archive by folders, for print(): names are sorted, and each folder is printed once.
class listing_tree {
public:
    /// Adds the file `path`; `note`, which must be printable, follows its name.
    void add(const std::string& path, const std::string& note);
    /// Prints the tree below a line with `title`, which must be printable, and the number of files.
    void print(console& out, const std::string& title) const;

private:
    struct entry {
        std::size_t folder = 0;         ///< index in `folders`; 0 for a file, as the top is in no folder
        std::vector<std::string> notes; ///< one for each file of the name
    };
    using folder = std::map<std::string, entry>;

    std::vector<folder> folders{1}; ///< the top is the first
    std::size_t files = 0;
};

} // namespace host

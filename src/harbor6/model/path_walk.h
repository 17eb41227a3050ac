#pragma once

#include "harbor6/model/folder.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace harbor6 {

class Archive;

/// A path in normal form, cut into its components. Components of one or two dots vanish without climbing, so
/// that a path cannot lead above where it starts; doubled and trailing separators vanish, a leading one
/// stays. Names that begin with dots, or are three dots or more, stay whole. A text of n separators has n + 1
/// components, an empty one has none.
class HARBOR6_API split_path {
public:
    split_path(std::string_view path, char separator);

    /// Gives the components as text, in order.
    class iterator {
    public:
        iterator(const split_path& path, std::size_t index);

        std::string operator*() const;
        iterator& operator++();
        friend bool operator==(const iterator& a, const iterator& b) { return a.index == b.index; }

    private:
        const split_path* path;
        std::size_t index;
    };

    iterator begin() const;
    iterator end() const;

private:
    std::string normal;
    char separator;
    std::vector<std::size_t> offsets; ///< where the components begin
};

/// The folders of the paths that one pass over an archive meets: each is found in the target or made there,
/// and the archive's client is asked once for a top-level one. It lives for one pass and owns nothing it is
/// given.
class HARBOR6_API PathWalk {
public:
    /// The item, counted, that shows the client a top-level folder of that name.
    using Model = std::function<Item*(const std::string& name)>;

    /// Folders are made in `target`; new top-level ones go to `added` too, unless that is null.
    PathWalk(Archive& archive, Folder& target, ContainerAdaptor* added, Model model);

    /// Walks down the folders of `path` from the target. `parent` becomes the folder reached, or the one
    /// where the client gave up, null if it left none. False if the client refused a folder, which ends the
    /// pass.
    bool walk(const std::string& path, pattern::AcquiredPtr<Folder>& parent);

private:
    bool topFolder(const std::string& token, pattern::AcquiredPtr<Folder>& parent,
                   pattern::AcquiredPtr<Folder>& folder);

    Archive& archive;
    Folder& target;
    ContainerAdaptor* added;
    Model model;
    std::map<std::string, pattern::AcquiredPtr<Folder>> folders; ///< top-level ones by their stored name
};

} // namespace harbor6

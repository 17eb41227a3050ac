#pragma once

#include "harbor6/model/folder.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace harbor6 {

class Archive;

/// The components of a normalised path. Normalising drops components of one or two dots without going up, so
/// that a path cannot lead above its start, and drops repeated and trailing separators; a leading one stays.
/// Names that begin with dots, or are three dots or more, are kept. A normalised path with n separators has
/// n + 1 components, an empty one has none.
class HARBOR6_API split_path {
public:
    split_path(std::string_view path, char separator);

    /// Iterates over the components; the path must outlive it.
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
    std::vector<std::size_t> offsets; ///< of the components in `normal`
};

/// Finds or makes the target folders for the paths of one pass over an archive. The archive's client is asked
/// once for each top-level folder. It lives for one pass and owns none of its arguments.
class HARBOR6_API PathWalk {
public:
    /// Returns a counted item that represents a top-level folder of that name to the client.
    using Model = std::function<Item*(const std::string& name)>;

    /// Folders are made in `target`. Top-level ones are added to `added` too, unless that is null.
    PathWalk(Archive& archive, Folder& target, ContainerAdaptor* added, Model model);

    /// Goes down the folders of `path` from the target, making those that don't exist. `parent` becomes the
    /// last folder. If the client declines in a name clash, `parent` is what it left as the folder, maybe
    /// null. Returns false if the client refused a new folder, which ends the pass. What the folders raise
    /// passes through.
    bool walk(const std::string& path, pattern::AcquiredPtr<Folder>& parent);

private:
    bool topFolder(const std::string& token, pattern::AcquiredPtr<Folder>& parent,
                   pattern::AcquiredPtr<Folder>& folder);

    Archive& archive;
    Folder& target;
    ContainerAdaptor* added;
    Model model;
    std::map<std::string, pattern::AcquiredPtr<Folder>>
        folders; ///< top-level ones, by their name in the archive
};

} // namespace harbor6

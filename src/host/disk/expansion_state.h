#pragma once

#include "harbor6/model/format.h"
#include "host/platform/directory_tree.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

namespace host {

/// Hears from target files how they fared. Paths are relative to the target; whoever prints one makes it
/// printable.
class journal {
public:
    journal() = default;
    journal(const journal&) = delete;
    journal& operator=(const journal&) = delete;
    virtual ~journal();

    /// The file stands whole, with `size` bytes.
    virtual void done(const std::string& path, std::uint64_t size) = 0;
    /// The file can't be had; the others can.
    virtual void refused(const std::string& path, const std::string& reason) = 0;
    /// The file was begun, and ended with `size` bytes that aren't all of it. `reason` may be empty.
    virtual void unfinished(const std::string& path, std::uint64_t size, const std::string& reason) = 0;
    /// The file was asked for, and nothing came for it.
    virtual void missing(const std::string& path) = 0;
    /// An item that was told of under the path `from`, itself or what is in it, stands as `to` now.
    virtual void moved(const std::string& from, const std::string& to);
};

class DiskFile;

/// What the folders and files of one expansion share. It outlives them all.
class expansion_state {
public:
    expansion_state(directory_tree& where, harbor6::Format& of_items, journal& told)
        : target(where), format(of_items), log(told) {}

    directory_tree& target;
    harbor6::Format& format; ///< the format of items on disk
    journal& log;
    bool folders_on_demand = false; ///< a folder is made with the first file in it, not before

    /// Lets the next file of that name take the place of what bears it.
    void replace_next(const std::string& folder, const std::string& name) {
        replaceable.emplace(folder, name);
    }
    bool is_replaceable(const std::string& folder, const std::string& name) const;
    /// Whether the file may replace; says so once.
    bool take_replaceable(const std::string& folder, const std::string& name);

    /// Names that were given to files which don't stand on disk yet. The second of two equal ones isn't kept.
    bool promise(const DiskFile& file);
    void forget(const DiskFile& file);
    bool is_promised(const std::string& folder, const std::string& name) const;

private:
    using place = std::pair<const std::string&, const std::string&>;
    struct by_place {
        using is_transparent = void;
        static place of(const DiskFile* file);
        static place of(const place& named) { return named; }
        template<class T>
        std::size_t operator()(const T& named) const {
            const auto [folder, name] = of(named);
            return std::hash<std::string>()(folder) * 31 + std::hash<std::string>()(name);
        }
        template<class A, class B>
        bool operator()(const A& a, const B& b) const {
            return of(a) == of(b);
        }
    };

    std::optional<std::pair<std::string, std::string>> replaceable;
    std::unordered_set<const DiskFile*, by_place, by_place> promised;
};

} // namespace host

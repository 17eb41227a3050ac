#pragma once

#include "host/disk_target.h"
#include "host/journal.h"
#include "model/format.h"

#include <optional>
#include <unordered_set>
#include <utility>

namespace host {

class DiskFile;

/// What the folders and files of one expansion share. It outlives them all.
class disk_expansion {
public:
    disk_expansion(disk_target& where, harbor6::Format& of_items, journal& told)
        : target(where), format(of_items), log(told) {}

    disk_target& target;
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

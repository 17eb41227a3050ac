#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace host {

/// The files that an expansion has made, each with its name. There may be many thousands, so one takes 24
/// bytes and its name.
class made_files {
public:
    using object = std::pair<std::uint64_t, std::uint64_t>; ///< device and number of a file

    bool empty() const { return sorted.empty() && recent.empty(); }
    /// Replaces the name if the file is known.
    void insert(const object& file, std::string_view name) {
        erase(file);
        const entry added{file, names.size()};
        names.append(name).push_back('\0');
        if (sorted.empty() || sorted.back() < added)
            sorted.push_back(added);
        else
            recent.push_back(added);
        if (recent.size() >= most_recent)
            merge();
    }
    void erase(const object& file) {
        if (const auto found = in_sorted(file); found != sorted.end())
            sorted.erase(found);
        std::erase_if(recent, [&](const entry& each) { return each.file == file; });
    }
    std::optional<std::string> name_of(const object& file) const {
        auto found = in_sorted(file);
        if (found == sorted.end()) {
            found = std::find_if(recent.begin(), recent.end(),
                                 [&](const entry& each) { return each.file == file; });
            if (found == recent.end())
                return std::nullopt;
        }
        return names.c_str() + found->name;
    }

private:
    struct entry {
        object file;
        std::size_t name; ///< place in `names`

        bool operator<(const entry& other) const { return file < other.file; }
    };
    using entries = std::vector<entry>;
    static constexpr std::size_t most_recent = 256;

    entries::const_iterator in_sorted(const object& file) const {
        const auto found = std::lower_bound(sorted.begin(), sorted.end(), entry{file, 0});
        return found != sorted.end() && found->file == file ? found : sorted.end();
    }
    void merge() {
        const auto middle = static_cast<std::ptrdiff_t>(sorted.size());
        std::sort(recent.begin(), recent.end());
        sorted.insert(sorted.end(), recent.begin(), recent.end());
        std::inplace_merge(sorted.begin(), sorted.begin() + middle, sorted.end());
        recent.clear();
    }

    entries sorted;
    entries recent; ///< those that came out of order
    std::string names;
};

} // namespace host

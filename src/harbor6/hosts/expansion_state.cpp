#include "harbor6/hosts/expansion_state.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/disk_file.h"
#include "harbor6/posix/temporary_files.h"
#include "harbor6/posix/write_behind.h"

#include <algorithm>

namespace host {

std::string numbered_name(const std::string& name, unsigned number) {
    const auto dot = name.rfind('.');
    const auto suffix = dot == name.npos || dot == 0 ? name.size() : dot;
    return name.substr(0, suffix) + " (" + un::write(number, 10, 1) + ")" + name.substr(suffix);
}

expansion_state::expansion_state(directory_tree& target_tree, harbor6::Format& plain_format, journal& reports)
    : target(target_tree), format(plain_format), log(reports),
      renamed(std::make_unique<renamed_folder>(target_tree)) {}

expansion_state::~expansion_state() = default;

void expansion_state::write_on_a_thread() {
    behind = std::make_unique<write_behind>();
}

expansion_state::place expansion_state::by_place::of(const DiskFile* file) {
    return {file->folder(), file->name()};
}

bool expansion_state::is_replaceable(const std::string& folder, const std::string& name) const {
    return replaceable && replaceable->first == folder && replaceable->second == name;
}

bool expansion_state::take_replaceable(const std::string& folder, const std::string& name) {
    const bool mine = is_replaceable(folder, name);
    replaceable.reset();
    return mine;
}

std::string expansion_state::folder_name(const std::string& parent, const std::string& name) {
    if (const auto found = renamed_folders.find({parent, name}); found != renamed_folders.end())
        return found->second;
    const auto is_free = [&](const std::string& candidate) {
        const auto entry =
            is_promised(parent, candidate) ? entry_kind::file : target.look_up(parent, candidate);
        return entry == entry_kind::none || (entry == entry_kind::folder && candidate == name);
    };
    auto free = name;
    for (unsigned number = 2; !is_free(free); ++number)
        free = numbered_name(name, number);
    if (free != name)
        renamed_folders.emplace(std::pair(parent, name), free);
    return free;
}

std::string expansion_state::imagine_folder(const std::string& folder) {
    for (std::size_t begin = 0; begin < folder.size();) {
        const auto end = std::min(folder.find('/', begin), folder.size());
        const auto path = folder.substr(0, end);
        if (!is_imagined(path)) {
            switch (target.look_up(nio::stem(path, '/'), folder.substr(begin, end - begin))) {
            case entry_kind::file:
                return "cannot use folder " + nio::printable(path) + ": it is a file";
            case entry_kind::other:
                return "cannot use folder " + nio::printable(path) + ": it is a symbolic link";
            default:
                imagined.insert(path);
            }
        }
        begin = end + 1;
    }
    return {};
}

bool expansion_state::promise(const DiskFile& file) {
    return promised.insert(&file).second;
}

void expansion_state::forget(const DiskFile& file) {
    promised.erase(promised.find(&file));
}

bool expansion_state::is_promised(const std::string& folder, const std::string& name) const {
    return promised.find(place(folder, name)) != promised.end();
}

} // namespace host

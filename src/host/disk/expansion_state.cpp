#include "host/disk/expansion_state.h"

#include "host/disk/disk_file.h"

namespace host {

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

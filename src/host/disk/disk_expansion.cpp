#include "host/disk/disk_expansion.h"

#include "host/disk/disk_file.h"

namespace host {

journal::~journal() = default;

void journal::moved(const std::string& /*from*/, const std::string& /*to*/) {}

disk_expansion::place disk_expansion::by_place::of(const DiskFile* file) {
    return {file->folder(), file->name()};
}

bool disk_expansion::is_replaceable(const std::string& folder, const std::string& name) const {
    return replaceable && replaceable->first == folder && replaceable->second == name;
}

bool disk_expansion::take_replaceable(const std::string& folder, const std::string& name) {
    const bool mine = is_replaceable(folder, name);
    replaceable.reset();
    return mine;
}

bool disk_expansion::promise(const DiskFile& file) {
    return promised.insert(&file).second;
}

void disk_expansion::forget(const DiskFile& file) {
    promised.erase(promised.find(&file));
}

bool disk_expansion::is_promised(const std::string& folder, const std::string& name) const {
    return promised.find(place(folder, name)) != promised.end();
}

} // namespace host

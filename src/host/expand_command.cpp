#include "harbor6/groundwork/text.h"
#include "host/commands.h"
#include "host/disk/disk_folder.h"

namespace host {

namespace {

/// The name of the folder for an archive's content: its own without its suffix, in the current folder.
std::string folder_for(const std::string& archive) {
    const auto name = nio::leaf(archive, '/');
    const auto suffix = name.rfind('.');
    return suffix == name.npos || suffix == 0 ? name + ".contents" : name.substr(0, suffix);
}

/// Where the content of an archive goes that was named without a target.
struct wrapper {
    std::string name; ///< in the current folder
    bool fresh;       ///< nothing bears the name yet
};

/// A file of the archive's name may come from an earlier time: then the folder gets a longer name.
wrapper wrapper_for(const std::string& archive) {
    const auto name = folder_for(archive);
    disk_target current(".", true);
    const auto entry = current.look({}, name);
    if (entry != disk_entry::file)
        return {name, entry == disk_entry::none};
    return {name + ".contents", current.look({}, name + ".contents") == disk_entry::none};
}

/// Lets an archive's only item take the place of the folder that was made for it.
void promote(workplace& at, const std::string& name) {
    disk_target current(".", true);
    disk_expansion expansion(current, at.items, at.log);
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    pattern::AcquiredPtr<harbor6::Item> result(top->acquireItemFromName(name));
    if (!result)
        return;
    top->promoteOnlyItem(result);
}

void expand_one(workplace& at, const std::string& archive) {
    const bool named_after = at.chosen.target.empty();
    const auto into = named_after ? wrapper_for(archive) : wrapper{at.chosen.target, false};
    // A link that stands where a new folder is expected leads somewhere the user never named.
    disk_target target(into.name, !named_after);
    disk_expansion expansion(target, at.items, at.log);
    expansion.folders_on_demand = !at.client.wanted.everything();
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    const auto way = at.chosen.nested ? road::by_items : road::one_pass;
    const bool ended = run_pass(at.known, at.items, at.log, archive, *top, way);
    if (into.fresh && at.log.is_sound() && at.client.wanted.everything())
        promote(at, into.name);
    for (const auto& pattern : at.client.wanted.take_unused())
        if (ended)
            at.log.refused(pattern, "no such file in it");
}

} // namespace

void expand(workplace& at) {
    at.client.wanted = selection(at.chosen.patterns);
    at.client.policy = at.chosen.policy;
    at.client.depth = at.chosen.nested ? at.chosen.depth : 0;
    for (const auto& archive : at.chosen.archives) {
        at.log.begin(archive);
        expand_one(at, archive);
        at.log.end();
    }
}

} // namespace host

#include "host/commands.h"
#include "host/disk_folder.h"
#include "outside/groundwork/text.h"

namespace host {

namespace {

/// The name of the folder for an archive's content: its own without its suffix, in the current folder.
std::string folder_for(const std::string& archive) {
    const auto name = nio::leaf(archive, '/');
    const auto suffix = name.rfind('.');
    return suffix == name.npos || suffix == 0 ? name + ".contents" : name.substr(0, suffix);
}

/// The folder in the current one for the content of an archive that was named without a target, and whether
/// it is a new one; null, with a message, if other things bear its names.
pattern::AcquiredPtr<harbor6::Folder> wrapper_for(const std::string& archive, DiskFolder& current,
                                                  report& log, bool& fresh) {
    const auto name = folder_for(archive);
    for (const auto& tried : {name, name + ".contents"}) {
        const pattern::AcquiredPtr<harbor6::Item> existing(current.acquireItemFromName(tried));
        fresh = !existing;
        if (fresh || existing->asFolder())
            return pattern::AcquiredPtr<harbor6::Folder>(current.acquireNewFolderFromName(tried, false));
    }
    log.failure("cannot use folder " + nio::printable(name) + ": it is not a folder");
    return {};
}

/// Lets an archive's only item take the place of the folder that was made for it.
void promote(DiskFolder& current, pattern::AcquiredPtr<harbor6::Folder> wrapper, report& log) {
    pattern::AcquiredPtr<harbor6::Item> result(wrapper.detach());
    const auto from = result->string(harbor6::key::name);
    current.promoteOnlyItem(result);
    log.moved(from, result->string(harbor6::key::name));
}

void expand_one(workplace& at, const std::string& archive) {
    const bool named_after = at.chosen.target.empty();
    disk_target target(named_after ? "." : at.chosen.target, true);
    disk_session session(target, at.items, at.log);
    const auto way = at.chosen.nested ? road::by_items : road::one_pass;
    session.folders_on_demand = named_after || at.chosen.nested || !at.client.wanted.everything();
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(session));
    auto into = pattern::AcquiredPtr<harbor6::Folder>::sharing(*top);
    bool fresh = false;
    if (named_after) {
        into = wrapper_for(archive, *top, at.log, fresh);
        if (!into)
            return;
    }
    const bool ended = run_pass(at.known, at.items, at.log, archive, *into, way);
    if (ended && fresh)
        promote(*top, std::move(into), at.log);
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

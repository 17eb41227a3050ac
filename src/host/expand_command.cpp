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

} // namespace

void expand(workplace& at) {
    at.client.wanted = selection(at.chosen.patterns);
    at.client.policy = at.chosen.policy;
    for (const auto& archive : at.chosen.archives) {
        at.log.begin(archive);
        const bool named_after = at.chosen.target.empty();
        // A link that stands where a new folder is expected leads somewhere the user never named.
        disk_target target(named_after ? folder_for(archive) : at.chosen.target, !named_after);
        disk_session session(target, at.items, at.log);
        session.folders_on_demand = !at.client.wanted.everything();
        const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(session));
        const bool ended = run_pass(at.known, at.items, at.log, archive, *top);
        for (const auto& pattern : at.client.wanted.take_unused())
            if (ended)
                at.log.refused(pattern, "no such file in it");
        at.log.end();
    }
}

} // namespace host

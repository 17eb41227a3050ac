#include "harbor6/groundwork/text.h"
#include "host/commands.h"
#include "host/disk/disk_folder.h"
#include "host/extraction.h"
#include "host/placement.h"
#include "host/platform/temporary_files.h"

#include <filesystem>

namespace host {

namespace {

/// The folder `path`, or the nearest existing one around it.
std::string folder_around(const std::string& path) {
    std::error_code error;
    auto folder = std::filesystem::absolute(path, error);
    while (folder.has_relative_path() && !std::filesystem::is_directory(folder, error))
        folder = folder.parent_path();
    return folder.string();
}

void expand_one(command_context& context, const std::string& archive) {
    const auto where = place(context, archive);
    if (!where)
        return;
    harbor6::ScratchSpace scratch(folder_around(where->folder));
    context.scratch = &scratch;
    auto& client = context.client;
    client.policy = where->may_replace ? context.chosen.policy : clash_policy::refuse;
    directory_tree target(where->folder, where->follows_links);
    target.syncs = context.chosen.sync;
    expansion_state expansion(target, context.plain_format, context.log);
    expansion.folders_on_demand = !client.wanted.everything();
    expansion.replaces_all = client.policy == clash_policy::overwrite;
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    const bool ended = extract_archive(context, archive, *top,
                                       context.chosen.nested ? traversal::item_by_item : traversal::one_pass);
    for (const auto& pattern : client.wanted.take_unused())
        if (ended)
            context.log.refused(pattern, "not found in the archive");
    target.sync_folders();
}

} // namespace

void expand(command_context& context) {
    remove_temporary_files_on_signals();
    context.client.wanted = selection(context.chosen.patterns);
    context.client.depth = context.chosen.nested ? context.chosen.depth : 0;
    for (const auto& archive : context.chosen.archives) {
        context.log.begin_archive(archive);
        try {
            expand_one(context, archive);
        } catch (const fs::Exception& failure) {
            context.log.archive_error(nio::printable(failure.message()));
        }
        context.scratch = nullptr;
        context.log.end_archive();
    }
}

} // namespace host

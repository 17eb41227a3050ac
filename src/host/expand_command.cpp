#include "harbor6/groundwork/text.h"
#include "host/commands.h"
#include "host/disk/disk_folder.h"
#include "host/extraction.h"

namespace host {

namespace {

/// The name of the folder for an archive's content: the archive's own without its suffix.
std::string folder_name_for(const std::string& archive) {
    const auto name = nio::leaf(archive, '/');
    const auto suffix = name.rfind('.');
    return suffix == name.npos || suffix == 0 ? name + ".contents" : name.substr(0, suffix);
}

/// A folder in the current one for the content of an archive, where the user named no target.
struct wrapper_folder {
    std::string name;
    bool is_new; ///< nothing of that name exists yet
};

wrapper_folder choose_wrapper(const std::string& archive) {
    directory_tree current(".", true);
    auto name = folder_name_for(archive);
    auto existing = current.look_up({}, name);
    if (existing == entry_kind::file) {
        // Perhaps the only item of this archive, expanded earlier.
        name += ".contents";
        existing = current.look_up({}, name);
    }
    return {name, existing == entry_kind::none};
}

/// If the folder `wrapper` contains only one item, moves that item up and removes the folder.
void unwrap_only_item(command_context& context, const std::string& wrapper) {
    directory_tree current(".", true);
    expansion_state expansion(current, context.plain_format, context.log);
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    pattern::AcquiredPtr<harbor6::Item> result(top->acquireItemFromName(wrapper));
    if (result)
        top->promoteOnlyItem(result);
}

void expand_one(command_context& context, const std::string& archive) {
    auto& wanted = context.client.wanted;
    const bool wraps = context.chosen.target.empty();
    const auto wrapper = wraps ? choose_wrapper(archive) : wrapper_folder{context.chosen.target, false};
    // The user never named the wrapper, so a link of its name may lead anywhere.
    directory_tree target(wrapper.name, !wraps);
    expansion_state expansion(target, context.plain_format, context.log);
    expansion.folders_on_demand = !wanted.everything();
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    const bool ended = extract_archive(context, archive, *top,
                                       context.chosen.nested ? traversal::item_by_item : traversal::one_pass);
    if (wrapper.is_new && context.log.is_sound() && wanted.everything())
        unwrap_only_item(context, wrapper.name);
    for (const auto& pattern : wanted.take_unused())
        if (ended)
            context.log.refused(pattern, "not found in the archive");
}

} // namespace

void expand(command_context& context) {
    context.client.wanted = selection(context.chosen.patterns);
    context.client.policy = context.chosen.policy;
    context.client.depth = context.chosen.nested ? context.chosen.depth : 0;
    for (const auto& archive : context.chosen.archives) {
        context.log.begin_archive(archive);
        expand_one(context, archive);
        context.log.end_archive();
    }
}

} // namespace host

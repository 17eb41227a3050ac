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
    directory_tree current(".", true);
    const auto entry = current.look({}, name);
    if (entry != entry_kind::file)
        return {name, entry == entry_kind::none};
    return {name + ".contents", current.look({}, name + ".contents") == entry_kind::none};
}

/// Lets an archive's only item take the place of the folder that was made for it.
void promote(command_context& context, const std::string& name) {
    directory_tree current(".", true);
    expansion_state expansion(current, context.plain_format, context.log);
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    pattern::AcquiredPtr<harbor6::Item> result(top->acquireItemFromName(name));
    if (!result)
        return;
    top->promoteOnlyItem(result);
}

void expand_one(command_context& context, const std::string& archive) {
    const bool named_after = context.chosen.target.empty();
    const auto into = named_after ? wrapper_for(archive) : wrapper{context.chosen.target, false};
    // A link that stands where a new folder is expected leads somewhere the user never named.
    directory_tree target(into.name, !named_after);
    expansion_state expansion(target, context.plain_format, context.log);
    expansion.folders_on_demand = !context.client.wanted.everything();
    const pattern::AcquiredPtr<DiskFolder> top(new DiskFolder(expansion));
    const auto way = context.chosen.nested ? traversal::item_by_item : traversal::one_pass;
    const bool ended = run_pass(context.formats, context.plain_format, context.log, archive, *top, way);
    if (into.fresh && context.log.is_sound() && context.client.wanted.everything())
        promote(context, into.name);
    for (const auto& pattern : context.client.wanted.take_unused())
        if (ended)
            context.log.refused(pattern, "no such file in it");
}

} // namespace

void expand(command_context& context) {
    context.client.wanted = selection(context.chosen.patterns);
    context.client.policy = context.chosen.policy;
    context.client.depth = context.chosen.nested ? context.chosen.depth : 0;
    for (const auto& archive : context.chosen.archives) {
        context.log.begin(archive);
        expand_one(context, archive);
        context.log.end();
    }
}

} // namespace host

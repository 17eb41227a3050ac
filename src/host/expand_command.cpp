#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/disk_folder.h"
#include "harbor6/posix/directory_tree.h"
#include "host/commands.h"
#include "host/extraction.h"
#include "host/placement.h"
#include "host/platform/process.h"

#include <optional>
#include <utility>

namespace host {

namespace {

namespace key = harbor6::key;
using pattern::AcquiredPtr;

/// "expanded 12 files, 3.4 MB, into x/"; nothing where it is reported why there are none.
void print_closing_line(const options& chosen, report& log, const placement& where) {
    log.settle();
    const auto& sums = log.archive_totals();
    const bool explained = !log.is_sound() || !chosen.only.empty();
    if (chosen.quiet || chosen.json || (sums.files == 0 && sums.skipped == 0 && explained))
        return;
    const auto folder = where.shown.empty() ? where.folder : where.shown;
    const auto place = nio::printable(folder == "."           ? "the current folder"
                                      : folder.ends_with('/') ? folder
                                                              : folder + '/');
    const auto kept = counted(sums.skipped, "existing file");
    if (sums.files == 0 && sums.skipped > 0) {
        log.out.print((chosen.dry_run ? "would keep " : "kept ") + kept + " in " + place + '\n');
        return;
    }
    log.out.print((chosen.dry_run ? "would expand " : "expanded ") + counted(sums.files, "file") + ", " +
                  human_size(sums.bytes) + ", into " + place +
                  (sums.skipped > 0 ? ", kept " + kept : std::string()) + '\n');
}

/// What becomes of the names, times and attributes of files.
void apply_options(const options& chosen, directory_tree& target, expansion_state& expansion) {
    target.syncs = chosen.sync;
    target.keeps_unfinished = chosen.keep_broken;
    expansion.leave_out = chosen.flat ? ~0u : chosen.strip;
    if (chosen.lower)
        expansion.change_name = [](const std::string& name) { return lower_case(name); };
    expansion.renames_folders = chosen.policy == clash_policy::rename;
    expansion.keeps_times = chosen.times;
    expansion.keeps_attributes = chosen.attributes;
}

/// Reads the head of the archive, and says what would become of its files.
void show_plan(command_context& context, const archive_source& archive, DiskFolder& top) {
    auto& client = context.client;
    auto& log = context.log;
    std::vector<AcquiredPtr<harbor6::File>> planned; // reserve their names
    client.announce = [&](const harbor6::File& file, harbor6::Folder& target, const std::string& path) {
        auto name = file.string(key::name);
        auto& folder = dynamic_cast<DiskFolder&>(target);
        auto parent = AcquiredPtr<harbor6::Folder>::sharing(target);
        if (const auto fault = folder.prepareFor(name); !fault.empty())
            return log.refused(path, fault);
        const AcquiredPtr<harbor6::Item> existing(folder.acquireItemFromName(name));
        const auto wanted = name;
        if (existing && !client.targetNameConflict(name, *existing, false, file, &parent))
            return;
        planned.emplace_back(folder._newFile());
        planned.back()->setString(key::name, name);
        log.planned(folder.pathOf(folder.nameHere(name)),
                    static_cast<std::uint64_t>(file.integer(key::uncompressedSize)),
                    existing && name == wanted);
    };
    client.head_only = true;
    client.may_ask = false;
    extract_archive(context, archive, top);
    client.announce = nullptr;
}

/// A folder on disk that archives are expanded into, and what is known of the files that they made there.
struct destination {
    destination(command_context& context, const placement& place)
        : where(place), scratch(folder_around(where.folder)), tree(where.folder, where.follows_links),
          expansion(tree, context.plain_format,
                    context.chosen.dry_run ? static_cast<journal&>(ignored) : context.log) {
        const auto& chosen = context.chosen;
        const auto& client = context.client;
        tree.most_open_folders = descriptors_for_folders();
        apply_options(chosen, tree, expansion);
        expansion.writes_nothing = chosen.dry_run;
        expansion.folders_on_demand = chosen.dry_run || chosen.flat || !client.wanted.everything();
        expansion.replaces_all = where.may_replace && client.policy == clash_policy::always;
        if (has_several_processors())
            expansion.write_on_a_thread();
        top = new DiskFolder(expansion);
    }

    const placement where;
    harbor6::ScratchSpace scratch;
    quiet_journal ignored; ///< takes what a plan would say
    directory_tree tree;
    expansion_state expansion;
    AcquiredPtr<DiskFolder> top;
};

/// Expands the archive into `into`, which is set first unless the archive follows one that it goes with.
void expand_one(command_context& context, const archive_source& archive, std::optional<destination>& into) {
    const auto& chosen = context.chosen;
    if (archive.offset == 0 || !archive.file_is_archive) {
        into.reset();
        if (const auto where = place(context, archive))
            into.emplace(context, *where);
    }
    if (!into)
        return;
    context.scratch = &into->scratch;
    context.client.may_replace = into->where.may_replace;
    const auto how = chosen.nested ? traversal::item_by_item : traversal::one_pass;
    if (chosen.dry_run)
        show_plan(context, archive, *into->top);
    else
        extract_archive(context, archive, *into->top, how);
    into->tree.sync_folders();
    print_closing_line(chosen, context.log, into->where);
}

class printed_file : public tally_sink {
public:
    explicit printed_file(console& output) : out(output) {}
    void write(std::string_view bytes) override { out.print(bytes); }

private:
    console& out;
};

/// Writes the bytes of all wanted files to the standard output, one file after another.
void print_files(command_context& context, const archive_source& archive) {
    tally counts{context.plain_format, context.log};
    counts.sink_for = [&](const std::string&) { return std::make_shared<printed_file>(context.log.out); };
    tally_archive(context, archive, counts, true);
}

} // namespace

void expand(command_context& context) {
    const auto& chosen = context.chosen;
    bool catches_signals = false;
    std::optional<destination> into;
    context.client.depth = chosen.nested ? chosen.depth : 0;
    context.client.policy = chosen.policy;
    work_on_archives(context, [&](const archive_source& archive) {
        // Not before: it starts a thread, and a process that has one is no good to start others from.
        if (!std::exchange(catches_signals, true))
            remove_temporary_files_on_signals();
        try {
            if (chosen.to_stdout)
                print_files(context, archive);
            else
                expand_one(context, archive, into);
        } catch (const fs::Exception& failure) {
            context.log.archive_error(nio::printable(failure.message()));
        }
        context.scratch = nullptr;
    });
}

} // namespace host

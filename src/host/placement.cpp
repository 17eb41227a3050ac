#include "host/placement.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/expansion_state.h"
#include "harbor6/hosts/source_file.h"
#include "harbor6/hosts/target.h"
#include "harbor6/model/archive.h"
#include "harbor6/model/single_fork_file.h"
#include "harbor6/posix/directory_tree.h"
#include "harbor6/stream/output.h"
#include "host/extraction.h"
#include "host/selection.h"

#include <filesystem>

namespace host {

namespace {

using pattern::AcquiredPtr;

/// Ends the reading of an archive when enough of it is known.
class enough_read : public un::exception {
public:
    enough_read() : un::exception("enough of the archive was read", "host::placement") {}
};

struct top_item {
    std::string name;
    bool is_folder;

    friend bool operator==(const top_item&, const top_item&) = default;
};

/// What the items of one pass over an archive's head share.
struct archive_head {
    harbor6::Format& plain_format;
    std::optional<top_item> only; ///< the items at the top up to now

    void note(const std::string& name, bool is_folder) {
        const top_item item{name, is_folder};
        if (!only)
            only = item;
        if (*only == item)
            return;
        only.reset();
        throw enough_read();
    }
};

/// Drops the data of formats that deliver it although only the records are wanted.
struct HeadFork : harbor6::Fork {
    harbor6::data::CountedOutput output(bool /*expanding*/) override {
        return harbor6::data::CountedOutput(new stream::infinite_output);
    }
};

class HeadFile : public TargetFile, public harbor6::OneForkFile<HeadFork>, public PlainItem<HeadFile> {
public:
    explicit HeadFile(harbor6::Format& plain_format) : PlainItem(plain_format) {}

protected:
    std::string itemName() const override { return {}; }
    bool setItemName(const std::string& /*name*/) override { return true; }
};

/// A target folder that notes the items at its top, and keeps nothing.
class HeadFolder : public TargetFolder, public PlainItem<HeadFolder> {
public:
    HeadFolder(archive_head& noted, bool top)
        : PlainItem(noted.plain_format), head(noted), file(new HeadFile(noted.plain_format)), at_top(top) {}

    const std::string& path() const override { return no_path; }
    std::string prepareFor(const std::string& /*name*/) override { return {}; }
    bool isCreated() override { return true; }
    harbor6::Item* acquireItemFromName(const std::string& /*name*/) override { return nullptr; }
    harbor6::File* acquireNewFileLike(const harbor6::Attributes& model, bool /*uniqueName*/) override {
        if (at_top)
            head.note(model.string(harbor6::key::name), false);
        return AcquiredPtr<harbor6::File>(file).detach();
    }
    harbor6::Folder* _newFolder() override { return new HeadFolder(head, at_top); }

protected:
    std::string itemName() const override { return {}; }
    /// With an empty name it stays the same folder as its parent.
    bool setItemName(const std::string& name) override {
        if (at_top && !name.empty()) {
            head.note(name, true);
            at_top = false;
        }
        return true;
    }

private:
    const std::string no_path;
    archive_head& head;
    AcquiredPtr<harbor6::File> file; ///< all files: only their names matter
    bool at_top;
};

/// The item at the top of the archive if there is one alone, as far as the archive can be read. Reads up to
/// the second one.
std::optional<top_item> only_item_in(command_context& context, const archive_source& archive) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(archive.path, ignored))
        return std::nullopt; // what is read from a pipe is gone
    archive_head head{context.plain_format, {}};
    try {
        const AcquiredPtr<SourceFile> file(
            new SourceFile(context.plain_format, nio::leaf(archive.path, '/'), archive.open()));
        const auto found = acquire_archive(context, *file);
        if (!found)
            return std::nullopt;
        found->options.records_only = true;
        const AcquiredPtr<HeadFolder> top(new HeadFolder(head, true));
        found->open(harbor6::Archive::mode_read);
        context.client.accepts_all = true;
        found->addContentTo(*top, nullptr);
    } catch (const enough_read&) {
        // All that matters here is known.
    } catch (...) {
        head.only.reset(); // the expansion reports it
    }
    context.client.accepts_all = false;
    return head.only;
}

} // namespace

std::string own_folder(const archive_source& archive) {
    const bool apart = archive.is_one_of_several && !archive.file_is_archive;
    const auto name = nio::leaf(apart ? archive.name() : archive.path, '/');
    auto own = apart ? name : name.substr(0, name.rfind('.'));
    // Of "...cab" would be left "..", which leads out of the target.
    if ((own == name && !apart) || !name_fault(own).empty())
        own = name + ".contents";
    return archive.number == 1 ? own : numbered_name(own, archive.number);
}

bool needs_own_folder(const command_context& context, const archive_source& archive) {
    return context.chosen.archives.size() > 1 || (archive.is_one_of_several && !archive.file_is_archive);
}

std::optional<placement> place(command_context& context, const archive_source& archive) {
    const auto& chosen = context.chosen;
    const auto own = own_folder(archive);
    if (needs_own_folder(context, archive))
        return placement{.folder = chosen.target.empty() ? own : join_path(chosen.target, own)};
    if (!chosen.target.empty())
        return placement{.folder = chosen.target, .follows_links = true};
    directory_tree current(".", true);
    // Which of the files are wanted, and what an archive in the archive contains, isn't known yet.
    // Without the folders of its path an item may get the name of anything.
    const bool looks_inside =
        context.client.wanted.everything() && !archive.is_one_of_several && !chosen.flat && chosen.strip == 0;
    auto only = looks_inside ? only_item_in(context, archive) : std::nullopt;
    if (only && chosen.lower)
        only->name = lower_case(only->name);
    if (!only || !name_fault(only->name).empty() || (chosen.nested && !only->is_folder)) {
        // A file of that name may be the only item of this archive as it was earlier.
        const bool taken = current.look_up({}, own) == entry_kind::file;
        return placement{.folder = taken ? own + ".contents" : own};
    }
    const auto shown = only->is_folder ? only->name : std::string();
    if (only->is_folder && only->name == own)
        return placement{.folder = ".", .follows_links = true, .shown = shown};
    switch (current.look_up({}, only->name)) {
    case entry_kind::none:
        return placement{.folder = ".", .follows_links = true, .may_replace = false, .shown = shown};
    case entry_kind::file:
        if (chosen.policy == clash_policy::rename && !only->is_folder)
            return placement{.folder = ".", .follows_links = true};
        if (chosen.policy == clash_policy::never) {
            context.log.skipped(only->name, "kept");
            return std::nullopt;
        }
        [[fallthrough]];
    default:
        context.log.refused(only->name, "exists already (-C DIR expands into another folder)");
        return std::nullopt;
    }
}

} // namespace host

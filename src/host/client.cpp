#include "host/client.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/hosts/disk_file.h"
#include "harbor6/hosts/disk_folder.h"
#include "harbor6/hosts/tally.h"
#include "harbor6/model/container.h"
#include "harbor6/model/path_walk.h"
#include "harbor6/model/volume_source.h"
#include "host/platform/terminal.h"

namespace host {

namespace {

using pattern::AcquiredPtr;

/// For messages.
std::string path_in(const harbor6::Folder& folder, const std::string& name) {
    const auto* const target = dynamic_cast<const TargetFolder*>(&folder);
    return target ? target->pathOf(name) : name;
}

/// What patterns are compared with: the file's path as the archive has it, whatever the target makes of it.
std::string path_in_archive(const harbor6::File& file, const std::string& path_in_target) {
    const auto stored = file.string(harbor6::key::pathName);
    if (stored.empty())
        return path_in_target;
    std::string path;
    for (const std::string name : harbor6::split_path(nio::stem(stored, '/'), '/'))
        if (!name.empty())
            path += name + '/';
    return path + file.string(harbor6::key::name);
}

void remove_if_empty(harbor6::Folder& parent, const std::string& name) {
    const AcquiredPtr<harbor6::Item> folder(parent.acquireItemFromName(name));
    try {
        if (folder && folder->asFolder())
            folder->erase();
    } catch (const fs::Exception&) {
        // It isn't empty, and stays.
    }
}

/// Runs a pass over the archive that takes every file and byte from `budget`, and keeps nothing. Raises what
/// the budget and the archive raise.
void measure(harbor6::Archive& archive, harbor6::Format& plain_format, nesting_budget& budget) {
    quiet_journal ignored;
    tally counts{plain_format, ignored};
    counts.arriving = [&](std::uint64_t files, std::uint64_t bytes) { budget.take(files, bytes); };
    const AcquiredPtr<TallyFolder> top(new TallyFolder(counts));
    archive.addContentTo(*top, nullptr);
}

/// Takes all items in `content`, at any depth, from `budget`.
void take_items(const harbor6::Container& content, nesting_budget& budget) {
    harbor6::ConstItemIterator items(content);
    for (items.first(); !items.isDone(); items.next()) {
        const AcquiredPtr<const harbor6::Item> item(items.current());
        std::int64_t size = 0;
        item->getInteger(harbor6::key::uncompressedSize, size);
        budget.take(1, static_cast<std::uint64_t>(size));
        if (const auto* const folder = item->asFolder())
            take_items(*folder, budget);
    }
}

} // namespace

/// The volumes of an archive inside another: files there, in any folder, that have the stored name.
class InnerVolumes : public harbor6::VolumeSource {
public:
    /// `size` is that of the first volume. The archive around must outlive this.
    InnerVolumes(harbor6::Archive* archive_around, std::uint64_t size, const nesting_budget& limits)
        : around(archive_around), opened(size), budget(limits) {}

    harbor6::data::CountedInput openVolume(const harbor6::VolumeRequest& request) override {
        harbor6::data::CountedInput found;
        if (around)
            find(*around, lower_case(nio::leaf(nio::leaf(request.name, '/'), '\\')), request, found);
        if (found && !budget.covers(opened += found->size()))
            throw un::exception(request.name +
                                    ": too much for the limits of archives in archives (--no-limits)",
                                "host::InnerVolumes");
        return found;
    }

private:
    /// Whether `found` is the volume; it may be another one of that name if not.
    static bool find(const harbor6::Container& content, const std::string& name,
                     const harbor6::VolumeRequest& request, harbor6::data::CountedInput& found) {
        harbor6::ConstItemIterator items(content);
        for (items.first(); !items.isDone(); items.next()) {
            const AcquiredPtr<const harbor6::Item> item(items.current());
            if (const auto* const folder = item->asFolder()) {
                if (find(*folder, name, request, found))
                    return true;
                continue;
            }
            auto* const file = const_cast<harbor6::File*>(item->asFile());
            const auto* const fork =
                file && lower_case(item->string(harbor6::key::name)) == name ? file->getMainFork() : nullptr;
            if (auto bytes = fork ? fork->input(true) : harbor6::data::CountedInput()) {
                found = bytes;
                const bool right = request.matches(*bytes);
                bytes->seek(0);
                if (right)
                    return true;
            }
        }
        return false;
    }

    harbor6::Archive* around;
    std::uint64_t opened; ///< bytes of all volumes
    const nesting_budget& budget;
};

Client::Client(report& told) : TargetClient(told), log(told) {
    advice = " (--overwrite says what to do then)";
}

Client::~Client() = default;

harbor6::Archive::Options Client::archiveOptions() const {
    auto options = TargetClient::archiveOptions();
    options.item_details = depth > 0 ? harbor6::Archive::Details::attributes : harbor6::Archive::Details::all;
    options.wanted_only = !wanted.everything();
    options.records_only = head_only;
    options.ignore_checksums = ignore_checksums;
    options.files_at_once = files_at_once;
    return options;
}

bool Client::wants(const harbor6::File& file, harbor6::Folder& target, const std::string& path) {
    if (!wanted.everything() && !wanted.wants(path_in_archive(file, path)))
        return false;
    if (announce)
        announce(file, target, path);
    return !head_only;
}

bool Client::sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                        const harbor6::Format** format) {
    if (accepts_all)
        return true;
    if (!TargetClient::sourceFile(file, target, expand, format))
        return false;
    // A pass over a whole archive asks without `format`; the data of its files arrives later.
    if (depth == 0 || !format)
        return true;
    // Item by item, the archive's bytes have all been read: a file without a stream got none of them.
    const auto* const fork = const_cast<harbor6::File&>(file).getMainFork();
    if (!fork || !fork->input(true)) {
        log.missing(path_in(target, file.string(harbor6::key::name)));
        return false;
    }
    if (expand)
        *expand = true;
    return true;
}

/// Opens an archive inside another and builds its tree of items, if the budget allows that much. Any failure
/// arises here, before something of it reaches the target; the archive may be open then.
void Client::openWithinBudget(harbor6::Archive& archive, harbor6::Folder& target, InnerVolumes& volumes) {
    archive.options = archiveOptions();
    archive.volumes = &volumes;
    archive.open(harbor6::Archive::mode_read);
    if (!budget.covers(archive.size())) {
        // The tree would use memory and disk for what the budget may refuse.
        auto rest = budget;
        accepts_all = true;
        try {
            measure(archive, target.format(), rest);
        } catch (...) {
            accepts_all = false;
            budget = rest;
            throw;
        }
        accepts_all = false;
    }
    take_items(archive, budget);
}

bool Client::sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) {
    const AcquiredPtr<harbor6::File> file(archive.acquireArchiveFile());
    const auto path = path_in(target, file->string(harbor6::key::name));
    const auto keep = [&](const std::string& reason) {
        log.refused(path, "kept as a file: " + reason);
        return false;
    };
    if (nesting.size() == depth)
        return keep("archives are nested more than " + un::write(depth, 10, 1) + " deep (--depth)");
    const auto name = archive.string(harbor6::key::name);
    if (const auto fault = name_fault(name); !fault.empty())
        return keep("no folder can have its name");
    const AcquiredPtr<harbor6::Item> found(target.acquireItemFromName(name));
    if (found && !found->asFolder())
        return keep("a file named " + nio::printable(name) + " exists");
    auto volumes = std::make_unique<InnerVolumes>(file->archive(), archive.size(), budget);
    try {
        openWithinBudget(archive, target, *volumes);
    } catch (const std::exception&) {
        const auto reason = failure_text(std::current_exception());
        archive.close();
        archive.volumes = nullptr;
        return keep(reason);
    }
    nesting.push_back({&archive, AcquiredPtr<harbor6::Folder>::sharing(target), !found, std::move(volumes)});
    return true;
}

bool Client::isInnermost(const harbor6::Archive& archive) const {
    return !nesting.empty() && nesting.back().archive == &archive;
}

void Client::sourceArchiveDone(harbor6::Archive& archive) {
    // An archive that was declined is reported as done too.
    if (isInnermost(archive))
        nesting.pop_back();
}

void Client::sourceArchiveFailed(harbor6::Archive& archive, const std::exception_ptr& failure) {
    const AcquiredPtr<harbor6::File> file(archive.acquireArchiveFile());
    auto path = file->string(harbor6::key::name);
    if (isInnermost(archive)) {
        auto& target = *nesting.back().target;
        if (nesting.back().new_folder)
            remove_if_empty(target, archive.string(harbor6::key::name));
        path = path_in(target, path);
    }
    try {
        std::rethrow_exception(failure);
    } catch (const fs::Exception&) {
        // The disk is at fault: no copy of the archive follows.
        log.refused(path, failure_text(failure));
    } catch (...) {
        log.refused(path, "kept as a file: " + failure_text(failure));
    }
}

bool Client::sourceArchiveDamaged(harbor6::Archive& /*archive*/, const std::exception_ptr& failure) {
    if (accepts_all)
        return false;
    log.damage(failure);
    return true;
}

void Client::itemFailed(std::uint32_t /*code*/, const harbor6::Item& /*source*/, harbor6::Item& target) {
    const auto* const file = dynamic_cast<const TargetFile*>(&target);
    log.refused(file ? file->path() : target.string(harbor6::key::name),
                "a checksum over its data is wrong; it is kept");
}

void Client::promotionFailed(harbor6::Folder& folder, const std::exception_ptr& failure) {
    const auto* const made = dynamic_cast<const TargetFolder*>(&folder);
    log.refused(made ? made->path() : folder.string(harbor6::key::name),
                "its only item could not replace it: " + failure_text(failure));
}

/// What the user wants for the file `path`, which exists. Raises un::exception if the user wants to stop.
clash_policy Client::askUser(const std::string& path) {
    const auto question =
        nio::printable(path) + " exists. Replace it? (y)es, (n)o, (a)ll, n(o)ne, (r)ename, (q)uit: ";
    while (const auto line = ask_on_terminal(question)) {
        switch (line->empty() ? '\0' : line->front() | 0x20) { // capital letters too
        case 'y':
            return clash_policy::always;
        case 'n':
            return clash_policy::never;
        case 'r':
            return clash_policy::rename;
        case 'a':
            return policy = clash_policy::always;
        case 'o':
            return policy = clash_policy::never;
        case 'q':
            stopped = true;
            throw un::exception("stopped, as you wished", "host::Client");
        default:
            break;
        }
    }
    may_ask = false;
    return clash_policy::ask;
}

/// Gives the new file a name that is free in `parent`.
bool Client::rename(std::string& name, const TargetFolder& parent) {
    auto& number = last_numbers.try_emplace(parent.pathOf(name), 1).first->second;
    std::string free;
    do
        free = numbered_name(name, ++number);
    while (parent.hasItemNamed(free));
    log.renamed(parent.pathOf(name), parent.pathOf(free));
    name = free;
    return true;
}

bool Client::mayTakeName(std::string& name, const harbor6::Item& other, const harbor6::Attributes& model,
                         TargetFolder& parent, bool moving) {
    if (policy == clash_policy::rename && !moving)
        return rename(name, parent);
    const auto* const file = dynamic_cast<const DiskFile*>(&other);
    const bool replaceable = file && file->isRegular() && !file->isOfThisExpansion();
    auto chosen = may_replace || policy == clash_policy::never ? policy : clash_policy::ask;
    if (chosen == clash_policy::ask && replaceable && !moving && may_ask && may_replace)
        chosen = askUser(parent.pathOf(name));
    if (chosen == clash_policy::rename && !moving)
        return rename(name, parent);
    any::time time;
    if (chosen == clash_policy::newer && replaceable)
        chosen = model.getTime(harbor6::key::modTime, time) && file->isOlderThan(time) ? clash_policy::always
                                                                                       : clash_policy::never;
    existing = chosen == clash_policy::never    ? Existing::keep
               : chosen == clash_policy::always ? Existing::replace
                                                : Existing::fail;
    return TargetClient::mayTakeName(name, other, model, parent, moving);
}

bool Client::targetNameConflict(std::string& name, harbor6::Item& other, bool folders,
                                const harbor6::Attributes& model, AcquiredPtr<harbor6::Folder>* target) {
    const auto* const source = dynamic_cast<const harbor6::Item*>(&model);
    auto* const folder = target ? dynamic_cast<DiskFolder*>(target->get()) : nullptr;
    if (!folder || !source || !source->asFolder())
        return TargetClient::targetNameConflict(name, other, folders, model, target);
    if (folder->leavesOutFolders())
        name.clear(); // whatever has that name, this folder isn't made
    else if (!other.asFolder() && policy == clash_policy::rename)
        name = folder->freeFolderName(name);
    else
        return TargetClient::targetNameConflict(name, other, folders, model, target);
    return true;
}

} // namespace host

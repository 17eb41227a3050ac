#include "host/client.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive.h"
#include "host/disk/disk_file.h"
#include "host/disk/disk_folder.h"

namespace host {

namespace {

using pattern::AcquiredPtr;

/// For messages.
std::string path_in(const harbor6::Folder& folder, const std::string& name) {
    const auto* const target = dynamic_cast<const TargetFolder*>(&folder);
    return target ? target->pathOf(name) : name;
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

} // namespace

bool Client::sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                        const harbor6::Format** format) {
    const auto name = file.string(harbor6::key::name);
    const auto path = path_in(target, name);
    if (!wanted.wants(path))
        return false;
    auto* const folder = dynamic_cast<TargetFolder*>(&target);
    const auto reason = path.size() >= TargetFolder::longest_path ? "its path is too long"
                        : folder                                  ? folder->prepareFor(name)
                                                                  : std::string();
    if (!reason.empty()) {
        log.refused(path.empty() ? "(no name)" : path, reason);
        return false;
    }
    // A pass over a whole archive asks without `format`; the data of its files arrives later.
    if (depth == 0 || !format)
        return true;
    // Item by item, the archive's bytes have all been read: a file without a stream got none of them.
    const auto* const fork = const_cast<harbor6::File&>(file).getMainFork();
    if (!fork || !fork->input(true)) {
        log.missing(path);
        return false;
    }
    if (expand)
        *expand = true;
    return true;
}

bool Client::sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) {
    const auto name = archive.string(harbor6::key::name);
    if (nesting.size() == depth) {
        log.refused(path_in(target, name), "kept as a file: archives are nested more than " +
                                               un::write(depth, 10, 1) + " deep (--depth)");
        return false;
    }
    const AcquiredPtr<harbor6::Item> existing(target.acquireItemFromName(name));
    if (existing && !existing->asFolder()) {
        log.refused(path_in(target, name), "a file of that name exists, so the archive is kept as a file");
        return false;
    }
    nesting.push_back({&archive, AcquiredPtr<harbor6::Folder>::sharing(target)});
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
    if (isInnermost(archive))
        remove_if_empty(*nesting.back().target, archive.string(harbor6::key::name));
    const AcquiredPtr<harbor6::File> file(archive.acquireArchiveFile());
    log.refused(file->string(harbor6::key::name), "kept as a file: " + failure_text(failure));
}

/// Whether what is called `name` may be stored in `parent`, where `existing` has that name; it may get
/// another name. All that depends on the policy is here. When `moving`, an archive's only item is to leave
/// the folder made for the archive, and stays there otherwise.
bool Client::mayTakeName(std::string& name, const harbor6::Item& existing, DiskFolder& parent, bool moving) {
    const auto path = parent.pathOf(name);
    const std::string stays = moving ? "; the new one stays in the folder made for it" : "";
    const auto* const file = dynamic_cast<const DiskFile*>(&existing);
    const bool replaceable = file && file->isRegular();
    std::string reason = existing.asFolder() ? "a folder of that name exists"
                         : replaceable       ? "exists already"
                                             : "a link or device of that name exists";
    switch (policy) {
    case clash_policy::keep:
        log.skipped(path, moving ? reason + stays : "kept");
        return false;
    case clash_policy::refuse:
        if (replaceable && !moving)
            reason += " (--overwrite replaces, --keep keeps such files)";
        break;
    case clash_policy::overwrite:
        if (replaceable) {
            parent.replaceNext(name);
            return true;
        }
        break;
    }
    log.refused(path, reason + stays);
    return false;
}

bool Client::targetNameConflict(std::string& name, harbor6::Item& existing, bool /*folders*/,
                                const harbor6::Attributes& model, AcquiredPtr<harbor6::Folder>* target) {
    const bool moving = !target;
    const auto parent = moving ? AcquiredPtr<harbor6::Folder>(existing.acquireParent()) : *target;
    auto* const folder = dynamic_cast<DiskFolder*>(parent.get());
    if (!folder)
        return false;
    const auto* const source = dynamic_cast<const harbor6::Item*>(&model);
    if (moving || !source || !source->asFolder())
        return mayTakeName(name, existing, *folder, moving);
    if (!existing.asFolder())
        *target = folder->makeUnusable(name, "it is not a folder");
    return true;
}

} // namespace host

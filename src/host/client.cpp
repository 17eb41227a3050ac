#include "host/client.h"

#include "harbor6/groundwork/text.h"
#include "harbor6/model/archive.h"
#include "host/disk/disk_file.h"
#include "host/disk/disk_folder.h"

namespace host {

namespace {

std::string join(const harbor6::Folder& folder, const std::string& name) {
    const auto* const known = dynamic_cast<const TargetFolder*>(&folder);
    return known ? directory_tree::join(known->path(), name) : name;
}

/// A folder that stands for one that can't be had, at the place of `parent`.
pattern::AcquiredPtr<harbor6::Folder> barred(const DiskFolder& parent, const std::string& name) {
    const auto reason = "cannot use folder " + nio::printable(directory_tree::join(parent.path(), name)) +
                        ": it is not a folder";
    return pattern::AcquiredPtr<harbor6::Folder>(
        new DiskFolder(parent.shared(), std::make_shared<const std::string>(parent.path()), reason));
}

/// A folder that was made for content which then didn't come.
void remove_empty(harbor6::Folder& parent, const std::string& name) {
    const pattern::AcquiredPtr<harbor6::Item> folder(parent.acquireItemFromName(name));
    try {
        if (folder && folder->asFolder())
            folder->erase();
    } catch (const fs::Exception&) {
        // It holds something, and stays.
    }
}

} // namespace

/// An item that is moved up out of its wrapper meets one of its name. Staying in the wrapper loses nothing.
bool Client::mayMoveOnto(const std::string& name, const harbor6::Item& existing) {
    const auto* const old = dynamic_cast<const DiskFile*>(&existing);
    if (policy == clash_policy::overwrite && old && old->isRegular()) {
        old->shared().replace_next(old->folder(), name);
        return true;
    }
    constexpr char stays[] = "exists already, the new one stays in the folder that was made for it";
    if (policy == clash_policy::keep)
        log.skipped(name, stays);
    else
        log.refused(name, stays);
    return false;
}

bool Client::sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                        const harbor6::Format** format) {
    const auto name = file.string(harbor6::key::name);
    const auto path = join(target, name);
    if (!wanted.wants(path))
        return false;
    auto* const folder = dynamic_cast<TargetFolder*>(&target);
    const auto reason = folder ? folder->refusal(name) : std::string();
    if (!reason.empty()) {
        log.refused(path.empty() ? "(no name)" : path, reason);
        return false;
    }
    // One pass offers no change of format, and its files have no streams of their own.
    if (depth == 0 || !format)
        return true;
    // Item by item the archive's bytes have all been read: a file without a stream got none of them.
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
    if (around.size() == depth) {
        log.refused(join(target, name), "kept as it is: archives lie inside archives here, more than " +
                                            un::write(depth, 10, 1) + " deep (--depth)");
        return false;
    }
    const pattern::AcquiredPtr<harbor6::Item> existing(target.acquireItemFromName(name));
    if (existing && !existing->asFolder()) {
        log.refused(join(target, name),
                    "stands where the content of an archive of that name was to go, which is kept as it is");
        return false;
    }
    around.push_back({&archive, pattern::AcquiredPtr<harbor6::Folder>::sharing(target)});
    return true;
}

void Client::sourceArchiveDone(harbor6::Archive& archive) {
    if (around.empty() || around.back().archive != &archive)
        return;
    const auto done = std::move(around.back());
    around.pop_back();
    const auto failure = failure_text();
    if (!failure)
        return;
    remove_empty(*done.target, archive.string(harbor6::key::name));
    log.refused(pattern::AcquiredPtr<harbor6::File>(archive.acquireArchiveFile())->string(harbor6::key::name),
                "kept as it is: " + *failure);
}

bool Client::sourceFolder(const harbor6::Folder& /*source*/, harbor6::Folder& /*target*/) {
    return true;
}

bool Client::targetFile(const harbor6::File& /*source*/, harbor6::File& /*newFile*/,
                        harbor6::Folder& /*target*/) {
    return true;
}

void Client::targetFileReady(const harbor6::File& /*source*/, harbor6::File& /*newFile*/) {}

bool Client::targetFolder(harbor6::Folder& /*newFolder*/, harbor6::Folder& /*parent*/,
                          const harbor6::Folder* /*source*/) {
    return true;
}

bool Client::targetNameConflict(std::string& name, harbor6::Item& existing, bool /*folders*/,
                                const harbor6::Attributes& model,
                                pattern::AcquiredPtr<harbor6::Folder>* target) {
    if (!target)
        return mayMoveOnto(name, existing);
    auto* const parent = dynamic_cast<DiskFolder*>(target->get());
    if (!parent)
        return false;
    const auto* const source = dynamic_cast<const harbor6::Item*>(&model);
    const auto path = directory_tree::join(parent->path(), name);
    if (source && source->asFolder()) {
        if (!existing.asFolder())
            *target = barred(*parent, name);
        return true;
    }
    const auto* const old = dynamic_cast<const DiskFile*>(&existing);
    if (policy == clash_policy::keep) {
        log.skipped(path, "kept");
    } else if (existing.asFolder()) {
        log.refused(path, "a folder of that name stands there");
    } else if (policy == clash_policy::refuse) {
        log.refused(path, "exists already (--overwrite replaces, --keep keeps such files)");
    } else if (!old || !old->isRegular()) {
        log.refused(path, "a link or device of that name stands there");
    } else {
        parent->shared().replace_next(parent->path(), name);
        return true;
    }
    return false;
}

void Client::itemFailed(std::uint32_t code, const harbor6::Item& source, harbor6::Item& /*target*/) {
    log.refused(source.string(harbor6::key::name), code == checksum_failed
                                                       ? "damaged: its checksum doesn't fit"
                                                       : "damaged: its data can't be decoded");
}

} // namespace host

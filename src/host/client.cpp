#include "host/client.h"

#include "host/disk_file.h"
#include "host/disk_folder.h"
#include "outside/groundwork/text.h"

namespace host {

namespace {

std::string join(const harbor6::Folder& folder, const std::string& name) {
    const auto* const known = dynamic_cast<const TargetFolder*>(&folder);
    return known ? disk_target::join(known->path(), name) : name;
}

/// A folder that stands for one that can't be had, at the place of `parent`.
pattern::AcquiredPtr<harbor6::Folder> barred(const DiskFolder& parent, const std::string& name) {
    const auto reason = "cannot use folder " + nio::printable(disk_target::join(parent.path(), name)) +
                        ": it is not a folder";
    return pattern::AcquiredPtr<harbor6::Folder>(
        new DiskFolder(parent.shared(), std::make_shared<const std::string>(parent.path()), reason));
}

} // namespace

bool Client::sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* /*expand*/,
                        const harbor6::Format** /*format*/) {
    const auto name = file.string(harbor6::key::name);
    const auto path = join(target, name);
    if (!wanted.wants(path))
        return false;
    auto* const folder = dynamic_cast<TargetFolder*>(&target);
    const auto reason = folder ? folder->refusal(name) : std::string();
    if (reason.empty())
        return true;
    log.refused(path.empty() ? "(no name)" : path, reason);
    return false;
}

bool Client::sourceArchive(harbor6::Archive& /*archive*/, harbor6::Folder& /*target*/) {
    return true;
}

void Client::sourceArchiveDone(harbor6::Archive& /*archive*/) {}

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
    auto* const parent = target ? dynamic_cast<DiskFolder*>(target->get()) : nullptr;
    if (!parent)
        return false;
    const auto* const source = dynamic_cast<const harbor6::Item*>(&model);
    if (source && source->asFolder()) {
        if (!existing.asFolder())
            *target = barred(*parent, name);
        return true;
    }
    const auto path = disk_target::join(parent->path(), name);
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
    log.refused(source.string(harbor6::key::name),
                code == 1001 ? "damaged: its checksum doesn't fit" : "damaged: its data can't be decoded");
}

} // namespace host

#include "harbor6/hosts/target_client.h"

namespace host {

using pattern::AcquiredPtr;

TargetClient::TargetClient(journal& log) : reports(log) {}

TargetClient::~TargetClient() = default;

harbor6::Archive::Options TargetClient::archiveOptions() {
    harbor6::Archive::Options options;
    options.published_rules = true;
    options.longest_path = TargetFolder::longest_path;
    return options;
}

bool TargetClient::wants(const harbor6::File& /*file*/, harbor6::Folder& /*target*/,
                         const std::string& /*path*/) {
    return true;
}

bool TargetClient::sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* /*expand*/,
                              const harbor6::Format** /*format*/) {
    const auto name = file.string(harbor6::key::name);
    auto* const folder = dynamic_cast<TargetFolder*>(&target);
    const auto path = folder ? folder->pathOf(name) : name;
    if (!wants(file, target, path))
        return false;
    const auto reason = path.size() >= TargetFolder::longest_path ? "its path is too long"
                        : folder                                  ? folder->prepareFor(name)
                                                                  : std::string();
    if (!reason.empty())
        reports.refused(path.empty() ? "(no name)" : path, reason);
    return reason.empty();
}

bool TargetClient::mayTakeName(std::string& name, const harbor6::Item& other,
                               const harbor6::Attributes& /*model*/, TargetFolder& parent, bool moving) {
    const auto path = parent.pathOf(name);
    const std::string stays = moving ? "; the new one stays in the folder made for it" : "";
    const auto* const file = dynamic_cast<const TargetFile*>(&other);
    const bool replaceable = file && file->isRegular();
    if (file && file->isOfThisExpansion()) {
        reports.refused(path, "another file of the archive has that name" + stays);
        return false;
    }
    const std::string reason = other.asFolder() ? "a folder of that name exists"
                               : replaceable    ? "exists already"
                                                : "a link or device of that name exists";
    switch (existing) {
    case Existing::keep:
        reports.skipped(path, moving ? reason + stays : "kept");
        return false;
    case Existing::fail:
        break;
    case Existing::replace:
        if (replaceable) {
            parent.replaceNext(name);
            return true;
        }
        break;
    }
    reports.refused(path, reason + (replaceable && !moving ? advice : stays));
    return false;
}

bool TargetClient::targetNameConflict(std::string& name, harbor6::Item& other, bool /*folders*/,
                                      const harbor6::Attributes& model,
                                      AcquiredPtr<harbor6::Folder>* target) {
    const bool moving = !target;
    const auto parent = moving ? AcquiredPtr<harbor6::Folder>(other.acquireParent()) : *target;
    auto* const folder = dynamic_cast<TargetFolder*>(parent.get());
    if (!folder)
        return false;
    const auto* const source = dynamic_cast<const harbor6::Item*>(&model);
    if (moving || !source || !source->asFolder())
        return mayTakeName(name, other, model, *folder, moving);
    if (const auto* const file = dynamic_cast<const TargetFile*>(&other); !other.asFolder())
        *target = folder->makeUnusable(name, file && !file->isRegular() ? "it is a link or device"
                                                                        : "it is not a folder");
    return true;
}

} // namespace host

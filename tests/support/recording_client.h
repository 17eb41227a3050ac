#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"
#include "harbor6/shell/client_interface.h"
#include "support/refusal.h"

#include <functional>
#include <map>
#include <set>

namespace support {

/// The name of an item, for transcripts.
inline std::string name_of(const harbor6::Attributes& item) {
    return item.string(harbor6::key::name);
}

/// Records every question in `log` and answers as `declined`, `expanded` and `on` say. A line of the log is
/// "question subject -> target", with ": no" after it for a question that is declined.
struct recording_client : harbor6::ClientInterface {
    struct question {
        std::string text; ///< as in the transcript, without the target and the answer
        harbor6::Archive* archive = nullptr;
        const harbor6::Format** format = nullptr;
        std::string* name = nullptr;
        pattern::AcquiredPtr<harbor6::Folder>* target = nullptr;
    };

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* wants_expansion,
                    const harbor6::Format** format) override {
        *wants_expansion = expanded.count(name_of(file)) != 0;
        return ask({.text = "sourceFile " + name_of(file), .format = format}, name_of(target));
    }
    bool sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) override {
        return ask({.text = "sourceArchive " + name_of(archive), .archive = &archive}, name_of(target));
    }
    void sourceArchiveDone(harbor6::Archive& archive) override { note("sourceArchiveDone ", archive); }
    bool sourceFolder(const harbor6::Folder& source, harbor6::Folder& target) override {
        return ask({.text = "sourceFolder " + name_of(source)}, name_of(target));
    }
    bool targetFile(const harbor6::File& source, harbor6::File& made, harbor6::Folder& target) override {
        const auto renamed = name_of(made) == name_of(source) ? "" : " as " + name_of(made);
        return ask({.text = "targetFile " + name_of(source)}, name_of(target) + renamed);
    }
    void targetFileReady(const harbor6::File& source, harbor6::File&) override {
        note("targetFileReady ", source);
    }
    bool targetFolder(harbor6::Folder& made, harbor6::Folder& parent,
                      const harbor6::Folder* source) override {
        return ask({.text = "targetFolder " + name_of(made)},
                   name_of(parent) + (source ? " from " + name_of(*source) : ""));
    }
    bool targetNameConflict(std::string& name, harbor6::Item& /*existing*/, bool folders,
                            const harbor6::Attributes& /*model*/,
                            pattern::AcquiredPtr<harbor6::Folder>* target) override {
        return ask({.text = "conflict " + name, .name = &name, .target = target},
                   (target ? name_of(**target) : std::string("here")) + (folders ? " folders" : ""));
    }
    void itemFailed(std::uint32_t code, const harbor6::Item& source, harbor6::Item& /*target*/) override {
        note("itemFailed " + std::to_string(code) + " ", source);
    }
    void promotionFailed(harbor6::Folder& folder, const std::exception_ptr& /*failure*/) override {
        note("promotionFailed ", folder);
    }

    bool sourceArchiveDamaged(harbor6::Archive& /*archive*/, const std::exception_ptr& failure) override {
        log += "damaged: " + refusal_of([&] { std::rethrow_exception(failure); }) + "\n";
        return goes_on;
    }

    bool goes_on = false;                                     ///< where an archive is damaged
    std::set<std::string> declined;                           ///< texts of questions to answer with no
    std::set<std::string> expanded;                           ///< names of files to expand as archives
    std::map<std::string, std::function<void(question&)>> on; ///< called before the answer, by text
    std::string log;

private:
    void note(const std::string& what, const harbor6::Attributes& item) {
        log += what + name_of(item) + "\n";
    }
    bool ask(question asked, const std::string& target) {
        const auto place = log.size();
        if (const auto reaction = on.find(asked.text); reaction != on.end())
            reaction->second(asked);
        const bool yes = !declined.count(asked.text);
        log.insert(place, asked.text + " -> " + target + (yes ? "\n" : ": no\n"));
        return yes;
    }
};

} // namespace support

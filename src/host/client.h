#pragma once

#include "harbor6/model/archive.h"
#include "harbor6/model/folder.h"
#include "harbor6/shell/client_interface.h"
#include "host/command_line.h"
#include "host/nesting_budget.h"
#include "host/report.h"
#include "host/selection.h"

#include <vector>

namespace host {

class DiskFolder;

/// The program's decisions: it takes the files that the user selected, as far as the target can store them.
/// An obstacle to one file or folder costs only what would be stored there, and each file is reported.
class Client : public harbor6::ClientInterface {
public:
    explicit Client(report& reports) : log(reports) {}

    selection wanted;
    clash_policy policy = clash_policy::refuse;
    /// Archives inside archives are expanded down to this depth; with 0 they are plain files.
    unsigned depth = 0;
    /// What archives inside the outermost one being expanded may still use.
    nesting_budget budget;

    /// A pass runs that keeps nothing: every file is accepted, and none is reported.
    bool accepts_all = false;

    /// How the program reads every archive.
    static harbor6::Archive::Options archiveOptions();

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                    const harbor6::Format** format) override;
    /// Opens the archive, and reads all of it, if it is to be expanded.
    bool sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) override;
    void sourceArchiveDone(harbor6::Archive& archive) override;
    bool targetNameConflict(std::string& name, harbor6::Item& existing, bool folders,
                            const harbor6::Attributes& model,
                            pattern::AcquiredPtr<harbor6::Folder>* target) override;
    void sourceArchiveFailed(harbor6::Archive& archive, const std::exception_ptr& failure) override;

private:
    bool mayTakeName(std::string& name, const harbor6::Item& existing, DiskFolder& parent, bool moving);
    void openWithinBudget(harbor6::Archive& archive, harbor6::Folder& target);
    bool isInnermost(const harbor6::Archive& archive) const;

    report& log;
    struct inner_archive {
        const harbor6::Archive* archive;
        pattern::AcquiredPtr<harbor6::Folder> target;
        bool new_folder; ///< no folder of the archive's name existed
    };
    std::vector<inner_archive> nesting; ///< inner archives that are being expanded, outermost first
};

} // namespace host

#pragma once

#include "harbor6/hosts/target_client.h"
#include "host/command_line.h"
#include "host/nesting_budget.h"
#include "host/report.h"
#include "host/selection.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace host {

class InnerVolumes;

/// The program's decisions: it takes the files that the user selected, as far as the target can store them,
/// asks where a file exists, and expands archives inside archives.
class Client : public TargetClient {
public:
    explicit Client(report& told);
    ~Client() override;

    selection wanted;
    clash_policy policy = clash_policy::ask;
    bool may_replace = true; ///< false: nothing is replaced, whatever the policy
    bool may_ask = true;  ///< with clash_policy::ask; without, or without a terminal, the existing file stays
    bool stopped = false; ///< the user answered that the program is to end
    /// Archives inside archives are expanded down to this depth; with 0 they are plain files.
    unsigned depth = 0;
    /// What archives inside the outermost one being expanded may still use.
    nesting_budget budget;

    /// Data whose checksum is wrong is kept.
    bool ignore_checksums = false;
    /// A pass runs that keeps nothing: every file is accepted, and none is reported.
    bool accepts_all = false;

    /// As in harbor6::Archive::Options.
    std::size_t files_at_once = 16;

    /// Called with each wanted file, the folder that it would go into and its path there, before anything is
    /// decided about it.
    std::function<void(const harbor6::File& file, harbor6::Folder& target, const std::string& path)> announce;
    /// No file's data is wanted: what archives say in their heads is enough.
    bool head_only = false;

    /// How the program reads every archive.
    harbor6::Archive::Options archiveOptions() const;

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                    const harbor6::Format** format) override;
    /// Opens the archive, and reads all of it, if it is to be expanded.
    bool sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) override;
    void sourceArchiveDone(harbor6::Archive& archive) override;
    bool targetNameConflict(std::string& name, harbor6::Item& other, bool folders,
                            const harbor6::Attributes& model,
                            pattern::AcquiredPtr<harbor6::Folder>* target) override;
    void sourceArchiveFailed(harbor6::Archive& archive, const std::exception_ptr& failure) override;
    /// Reports the damage, and has the pass go on.
    bool sourceArchiveDamaged(harbor6::Archive& archive, const std::exception_ptr& failure) override;
    /// Reports data that may be wrong.
    void itemFailed(std::uint32_t code, const harbor6::Item& source, harbor6::Item& target) override;
    void promotionFailed(harbor6::Folder& folder, const std::exception_ptr& failure) override;

protected:
    bool wants(const harbor6::File& file, harbor6::Folder& target, const std::string& path) override;
    bool mayTakeName(std::string& name, const harbor6::Item& other, const harbor6::Attributes& model,
                     TargetFolder& parent, bool moving) override;

private:
    clash_policy askUser(const std::string& path);
    bool rename(std::string& name, const TargetFolder& parent);
    void openWithinBudget(harbor6::Archive& archive, harbor6::Folder& target, InnerVolumes& volumes);
    bool isInnermost(const harbor6::Archive& archive) const;

    report& log;
    std::map<std::string, unsigned> last_numbers; ///< of renamed files, by the paths that they had
    struct inner_archive {
        const harbor6::Archive* archive;
        pattern::AcquiredPtr<harbor6::Folder> target;
        bool new_folder; ///< no folder of the archive's name existed
        std::unique_ptr<InnerVolumes> volumes;
    };
    std::vector<inner_archive> nesting; ///< inner archives that are being expanded, outermost first
};

} // namespace host

#pragma once

#include "harbor6/model/folder.h"
#include "harbor6/shell/client_interface.h"
#include "host/report.h"
#include "host/selection.h"

#include <vector>

namespace host {

/// What happens to a file that would take the place of another.
enum class clash_policy {
    refuse,    ///< the old one stays, and that is reported as a trouble
    keep,      ///< the old one stays, as the user wished
    overwrite, ///< the new one takes its place once it is whole
};

/// The program's decisions. It takes the files that the user selected, as far as the target can have them.
/// Something in the way of a file or folder costs what would have stood there, with a message for each file,
/// and nothing else.
class Client : public harbor6::ClientInterface {
public:
    explicit Client(report& told) : log(told) {}

    selection wanted;
    clash_policy policy = clash_policy::refuse;
    /// Archives inside archives are expanded down to this depth; with 0 they are files as any other.
    unsigned depth = 0;

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                    const harbor6::Format** format) override;
    bool sourceArchive(harbor6::Archive& archive, harbor6::Folder& target) override;
    void sourceArchiveDone(harbor6::Archive& archive) override;
    bool sourceFolder(const harbor6::Folder& source, harbor6::Folder& target) override;
    bool targetFile(const harbor6::File& source, harbor6::File& newFile, harbor6::Folder& target) override;
    void targetFileReady(const harbor6::File& source, harbor6::File& newFile) override;
    bool targetFolder(harbor6::Folder& newFolder, harbor6::Folder& parent,
                      const harbor6::Folder* source) override;
    bool targetNameConflict(std::string& name, harbor6::Item& existing, bool folders,
                            const harbor6::Attributes& model,
                            pattern::AcquiredPtr<harbor6::Folder>* target) override;
    void itemFailed(std::uint32_t code, const harbor6::Item& source, harbor6::Item& target) override;

private:
    bool mayMoveOnto(const std::string& name, const harbor6::Item& existing);

    report& log;
    struct inner {
        const harbor6::Archive* archive;
        pattern::AcquiredPtr<harbor6::Folder> target;
    };
    std::vector<inner> around; ///< inner archives that are being expanded, outermost first
};

} // namespace host

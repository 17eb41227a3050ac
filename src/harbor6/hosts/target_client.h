#pragma once

#include "harbor6/hosts/target.h"
#include "harbor6/model/archive.h"
#include "harbor6/shell/client_interface.h"

namespace host {

/// The decisions of a program that expands into folders of this library (TargetFolder): it takes the files
/// that are wanted, as far as the target can store them. An obstacle to one file or folder costs only what
/// would be stored there, and is reported to the journal, which outlives the client. One thread.
class HARBOR6_API TargetClient : public harbor6::ClientInterface {
public:
    explicit TargetClient(journal& reports);
    ~TargetClient() override;

    /// What happens where a file of that name exists.
    enum class Existing {
        fail,    ///< it stays, which is reported as a failure
        keep,    ///< it stays
        replace, ///< the new file replaces it once it is complete
    };
    Existing existing = Existing::fail;
    /// Follows the report that a file exists, where another choice would have let it be replaced.
    std::string advice;

    /// How an archive is to be read for such a target: damage is told, and paths are bounded.
    static harbor6::Archive::Options archiveOptions();

    bool sourceFile(const harbor6::File& file, harbor6::Folder& target, bool* expand,
                    const harbor6::Format** format) override;
    bool targetNameConflict(std::string& name, harbor6::Item& other, bool folders,
                            const harbor6::Attributes& model,
                            pattern::AcquiredPtr<harbor6::Folder>* target) override;

protected:
    /// Whether the file, which would go into the folder `target` and have the path `path`, is wanted; here
    /// every file is.
    virtual bool wants(const harbor6::File& file, harbor6::Folder& target, const std::string& path);

    /// Whether what `model` describes may be stored in `parent`, where `other` has the name; it may get
    /// another name. When `moving`, an archive's only item is to leave the folder made for the archive, and
    /// stays there otherwise.
    virtual bool mayTakeName(std::string& name, const harbor6::Item& other, const harbor6::Attributes& model,
                             TargetFolder& parent, bool moving);

private:
    journal& reports;
};

} // namespace host

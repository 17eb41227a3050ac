#pragma once

#include "outside/shell/client_interface.h"

namespace harbor6 {

/// Wants everything, for a pass that builds a tree.
class TakeAll : public ClientInterface {
public:
    bool sourceFile(const File& file, Folder& target, bool* expand, const Format** format) override;
    bool sourceArchive(Archive& archive, Folder& target) override;
    void sourceArchiveDone(Archive& archive) override;
    bool sourceFolder(const Folder& source, Folder& target) override;
    bool targetFile(const File& source, File& newFile, Folder& target) override;
    void targetFileReady(const File& source, File& newFile) override;
    bool targetFolder(Folder& newFolder, Folder& parent, const Folder* source) override;
    bool targetNameConflict(std::string& name, Item& existing, bool folders, const Attributes& model,
                            pattern::AcquiredPtr<Folder>* target) override;
    void itemFailed(std::uint32_t code, const Item& source, Item& target) override;
};

} // namespace harbor6

#include "outside/shell/take_all.h"

namespace harbor6 {

bool TakeAll::sourceFile(const File& /*file*/, Folder& /*target*/, bool* /*expand*/,
                         const Format** /*format*/) {
    return true;
}

bool TakeAll::sourceArchive(Archive& /*archive*/, Folder& /*target*/) {
    return false;
}

void TakeAll::sourceArchiveDone(Archive& /*archive*/) {}

bool TakeAll::sourceFolder(const Folder& /*source*/, Folder& /*target*/) {
    return true;
}

bool TakeAll::targetFile(const File& /*source*/, File& /*newFile*/, Folder& /*target*/) {
    return true;
}

void TakeAll::targetFileReady(const File& /*source*/, File& /*newFile*/) {}

bool TakeAll::targetFolder(Folder& /*newFolder*/, Folder& /*parent*/, const Folder* /*source*/) {
    return true;
}

bool TakeAll::targetNameConflict(std::string& /*name*/, Item& /*existing*/, bool /*folders*/,
                                 const Attributes& /*model*/, pattern::AcquiredPtr<Folder>* /*target*/) {
    return true;
}

void TakeAll::itemFailed(std::uint32_t /*code*/, const Item& /*source*/, Item& /*target*/) {}

} // namespace harbor6

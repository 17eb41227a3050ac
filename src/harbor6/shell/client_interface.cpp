#include "harbor6/shell/client_interface.h"

namespace harbor6 {

ClientInterface::~ClientInterface() = default;

bool ClientInterface::sourceFile(const File& /*file*/, Folder& /*target*/, bool* /*expand*/,
                                 const Format** /*format*/) {
    return true;
}

bool ClientInterface::sourceArchive(Archive& /*archive*/, Folder& /*target*/) {
    return true;
}

void ClientInterface::sourceArchiveDone(Archive& /*archive*/) {}

bool ClientInterface::sourceFolder(const Folder& /*source*/, Folder& /*target*/) {
    return true;
}

bool ClientInterface::targetFile(const File& /*source*/, File& /*newFile*/, Folder& /*target*/) {
    return true;
}

void ClientInterface::targetFileReady(const File& /*source*/, File& /*newFile*/) {}

bool ClientInterface::targetFolder(Folder& /*newFolder*/, Folder& /*parent*/, const Folder* /*source*/) {
    return true;
}

bool ClientInterface::targetNameConflict(std::string& /*name*/, Item& /*existing*/, bool folders,
                                         const Attributes& /*model*/,
                                         pattern::AcquiredPtr<Folder>* /*target*/) {
    return folders;
}

void ClientInterface::itemFailed(std::uint32_t /*code*/, const Item& /*source*/, Item& /*target*/) {}

void ClientInterface::sourceArchiveFailed(Archive& /*archive*/, const std::exception_ptr& /*failure*/) {}

void ClientInterface::promotionFailed(Folder& /*folder*/, const std::exception_ptr& /*failure*/) {}

bool ClientInterface::sourceArchiveDamaged(Archive& /*archive*/, const std::exception_ptr& /*failure*/) {
    return false;
}

} // namespace harbor6

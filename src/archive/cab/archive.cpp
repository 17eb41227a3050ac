#include "archive/cab/archive.h"

#include "archive/cab/content_scan.h"

namespace harbor6::cab {

Archive::Archive(const harbor6::Format& format, Item& storing_item, unsigned mode)
    : SuperArchive(format, storing_item, mode) {}

Archive::~Archive() {
    try {
        _close();
    } catch (...) {
    }
}

void Archive::addContentTo(Folder& target, ContainerAdaptor* adaptor) const {
    const auto storage = storageInput(0);
    content_scan(const_cast<Archive&>(*this), *storage, target, adaptor).run();
}

} // namespace harbor6::cab

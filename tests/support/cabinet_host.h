#pragma once

#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_format.h"
#include "harbor6/model/format.h"
#include "support/memory_host.h"
#include "support/refusal.h"

namespace support {

/// A memory host with one cabinet outside its root.
struct cabinet_host : memory_host {
    explicit cabinet_host(const std::string& bytes)
        : stored(source("x.cab", bytes)), archive(format._newArchiveAtItem(stored.get(), 0)) {}

    /// Expands the cabinet into the root; returns the failure as refusal_of does.
    std::string expand(harbor6::ContainerAdaptor* adaptor = nullptr) {
        return refusal_of([&] { archive->addContentTo(*root(), adaptor); });
    }

    harbor6::cab::Format format{&shell};
    pattern::AcquiredPtr<memory_file> stored;
    pattern::AcquiredPtr<harbor6::Archive> archive;
};

} // namespace support

#pragma once

#include "model/super_archive.h"

namespace harbor6::cab {

/// A cabinet. It keeps no state between calls: every addContentTo reads its storage from the first byte on,
/// once, strictly forward. The offsets that a cabinet states are not consulted.
class Archive : public SuperArchive {
public:
    Archive(const harbor6::Format& format, Item& storing_item, unsigned mode);
    /// Ends what is still open; what that raises ends there.
    ~Archive() override;

    /// Takes the content out into `target` in one pass: reads header and records, asks the client which files
    /// are wanted, makes those files and their folders, and runs every cabinet folder, wanted or not, from
    /// its first block to its last through its decoder into them. Each top-level item that is made or found
    /// goes to `adaptor` too, unless that is null.
    ///
    /// A cabinet that continues in a next one raises un::implemented, one whose content is refused
    /// format::exception; failures of streams, decoders and of the target pass through. What was made before
    /// a failure stays. A client that refuses a new folder ends the pass without a failure.
    void addContentTo(Folder& target, ContainerAdaptor* adaptor) const override;
};

} // namespace harbor6::cab

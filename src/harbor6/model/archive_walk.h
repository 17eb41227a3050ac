#pragma once

#include "harbor6/model/archive_entries.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6 {

/// The item tree of one archive that keeps none, while it is open: the archive's content pass runs once into
/// folders and files that live in memory, and those are the archive's entries from then on.
class ArchiveWalk {
public:
    explicit ArchiveWalk(Archive& archive);
    ~ArchiveWalk();

    /// Runs the archive's content pass. What it raises passes through, and the walk is of no use then.
    void build();
    EntryFolder& root() const;
    /// While the pass runs, it asks this shell, which wants everything, in place of the host's; null
    /// otherwise.
    HarborShell* shell();

private:
    Archive& archive;
    ClientInterface client; ///< wants everything
    HarborShell own_shell;
    std::shared_ptr<WalkState> state;
    pattern::AcquiredPtr<EntryFolder> tree;
};

} // namespace harbor6

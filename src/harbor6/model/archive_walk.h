#pragma once

#include "harbor6/model/archive_entries.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6 {

/// The item tree of an open archive whose format has none: the archive's content pass runs once into folders
/// and files in memory, which are the archive's entries from then on. Owned by the archive.
class ArchiveWalk {
public:
    /// The bytes of the entries are kept in `space`, which must outlive the walk and its entries.
    ArchiveWalk(Archive& archive, ScratchSpace& space);
    ~ArchiveWalk();

    /// Runs the archive's content pass. What it raises passes through, and the walk is unusable then.
    void build();
    EntryFolder& root() const;
    /// Whether the pass is running.
    bool building() const;
    /// The shell that the pass uses in place of the host's; its client accepts everything.
    HarborShell& shell();

private:
    Archive& archive;
    ClientInterface client; ///< accepts everything
    HarborShell own_shell;
    std::shared_ptr<WalkState> state;
    pattern::AcquiredPtr<EntryFolder> tree;
};

} // namespace harbor6

#pragma once

#include "harbor6/model/archive_entries.h"
#include "harbor6/shell/client_interface.h"
#include "harbor6/shell/harbor_shell.h"

namespace harbor6 {

/// The item tree of an open archive whose format has none: the archive's content pass runs once into folders
/// and files in memory, which are the archive's entries from then on. Owned by the archive.
///
/// If the archive is damaged, the tree has the files that came whole, and whoever iterates over its top is
/// told the first failure at the end, by an exception.
class ArchiveWalk {
public:
    /// The bytes of the entries are kept in `space`, which must outlive the walk and its entries.
    ArchiveWalk(Archive& archive, ScratchSpace& space);
    ~ArchiveWalk();

    /// Runs the archive's content pass. A lack of memory passes through, and the walk is unusable then.
    void build();
    EntryFolder& root() const;
    /// Whether the pass is running.
    bool building() const;
    /// The shell that the pass uses in place of the host's; its client accepts everything.
    HarborShell& shell();

private:
    /// Accepts everything, and has the pass go on behind damage.
    struct Client : ClientInterface {
        bool sourceArchiveDamaged(Archive& archive, const std::exception_ptr& failure) override;
        std::exception_ptr first_failure;
    };

    Archive& archive;
    Client client;
    HarborShell own_shell;
    std::shared_ptr<WalkState> state;
    pattern::AcquiredPtr<EntryFolder> tree;
};

} // namespace harbor6

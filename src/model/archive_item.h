#pragma once

#include "model/item.h"

namespace harbor6 {

/// An entry of an archive, which it must not outlive: all that it answers, it asks the archive.
class HARBOR6_API ArchiveItem : public virtual Item {
public:
    ~ArchiveItem() override;

    using Item::archive;

    Archive* archive() override;
    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;
    std::uint64_t position() override;
    void commitItem() override;
    /// The archive itself, whatever folder path the entry has.
    Folder* acquireParent() override;
    bool exists() override;

    /// The archive to which the entry belongs, not counted.
    virtual Archive* owningArchive() const = 0;
    virtual void itemCommitted();
};

} // namespace harbor6

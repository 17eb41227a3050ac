#pragma once

#include "harbor6/hosts/registry.h"
#include "harbor6/hosts/tally.h"
#include "harbor6/hosts/target_client.h"

#include <exception>
#include <functional>

namespace host {

/// Receives the bytes of an archive's files. What it raises ends the reading.
class HARBOR6_API entry_receiver {
public:
    entry_receiver() = default;
    entry_receiver(const entry_receiver&) = delete;
    entry_receiver& operator=(const entry_receiver&) = delete;
    virtual ~entry_receiver();

    /// Whether the bytes of this entry are wanted; asked once for each, in order, before any bytes come.
    virtual bool wants(std::size_t entry);
    /// More bytes of a wanted entry. The entries come one after another, but not always in their order.
    virtual void bytes(std::size_t entry, std::string_view more) = 0;
    /// The entry ended: `complete` tells whether with all its bytes, and undamaged. An entry that wasn't
    /// reached before a failure is not told.
    virtual void ended(std::size_t entry, bool complete);
};

/// An archive as a list of the files in it, which are read one by one or in one pass: all that a reader of
/// archives needs, without folders and items. It has formats of its own, so that readers on different threads
/// are independent; the registry that it was made with must outlive it. One thread at a time.
class HARBOR6_API ArchiveReader {
public:
    /// Reads the head of the archive in `bytes`, which keep what Fork::input promises. `volumes`, unless it
    /// is null, has the other files of an archive of several, and outlives the reader. Raises
    /// format::exception if no format of `loaded` recognises it, and what reading the first bytes raises. A
    /// later failure is kept in head_failure().
    ArchiveReader(const Registry& loaded, std::unique_ptr<stream::input> bytes,
                  harbor6::VolumeSource* volumes = nullptr);
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;
    ~ArchiveReader();

    /// The files, in the archive's order, as far as its heads could be read. Each has a path, the size that
    /// the archive states, and every attribute in `attributes` that its format knows.
    const std::vector<tally_entry>& entries() const;
    static const std::vector<std::string> attributes;
    /// What is wrong with the head; null if nothing is.
    const std::exception_ptr& head_failure() const;
    /// Of the archive's format.
    const harbor6::Format& format() const;

    /// Whether data whose checksum is wrong is delivered all the same, as damaged. At first it isn't.
    void ignore_checksums(bool ignored);

    /// Reads the wanted entries in one pass, no further than they need. Damage costs the entries that need
    /// what is damaged, and the first is raised at the end. The entries that were complete are sound.
    void read(entry_receiver& receiver);
    /// Writes the entries for which `wants` returns true into `target`, whose items have plain_format(), so
    /// that they ask this reader where names clash. One pass. What concerns one file alone goes to `reports`,
    /// to which each of them is reported; damage is raised at the end, and what ends the pass at once.
    void expand(harbor6::Folder& target, journal& reports, TargetClient::Existing existing,
                const std::function<bool(std::size_t)>& wants);

    /// The format of items outside the archive, for targets; lives as long as the reader.
    harbor6::Format& plain_format();

private:
    struct Body;
    std::unique_ptr<Body> body;
};

} // namespace host

#pragma once

#include "harbor6/model/item.h"
#include "harbor6/shell/fork.h"
#include "harbor6/shell/iterator.h"

namespace harbor6 {

/// An item with data, which is in one or more numbered forks that belong to the file. The defaults refuse or
/// return nothing; a concrete file overrides what it can do. What streams raise passes through every
/// operation unless it says otherwise.
class HARBOR6_API File : public virtual Item, public pattern::TraversableConst<const Fork*> {
public:
    ~File() override;

    const File* asFile() const override;
    File* asFile() override;

    /// A walk over the forks; here, over the main fork alone. The forks are not counted.
    std::unique_ptr<pattern::Iterator<const Fork*>> createIterator() const override;
    /// Commits this file and copies the forks of `other` into it; nothing more if that is no file. If this
    /// file is an archive (containerFormat, and no symbolic link), a new archive of that format is made in it
    /// instead, and `other` is added there as an item.
    virtual void adopt(File* other);
    virtual void adopt(Item* other);
    /// Raises un::implemented by default.
    virtual void adoptFileContents(File& other);
    /// The fork number 0, null if there is none. The const form raises un::implemented by default.
    virtual Fork* getMainFork();
    virtual const Fork* getMainFork() const;
    /// The fork of that number, null if the file doesn't have it.
    virtual Fork* getFork(unsigned id);
    virtual const Fork* getFork(unsigned id) const;
    /// Creates `target` if it isn't created, copies the forks into it and commits it.
    virtual void copyTo(File& target) const;
    /// Copies the file into a sink, so that the client is told of damaged data.
    virtual void testContents() const;
    /// A stream over the file as a whole; empty by default. An overriding class defines `x`.
    virtual data::CountedInput input(std::uint64_t x);
    virtual data::random::CountedInput randomInput(std::uint64_t x);
    /// Raises un::implemented by default.
    virtual Transform& expansionTransform();
    /// A stream that writes into `target` through the file's compression transform; empty if it has none.
    virtual data::CountedOutput output(data::CountedOutput& target);
    /// As randomInput.
    virtual data::random::CountedOutput randomOutput(std::uint64_t x);
    /// A transform that compresses for this file, counted for the caller; null by default.
    virtual Transform* compressionTransform();
    /// Reserved; never called.
    virtual void reservedFileHookA(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookB(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookC(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookD(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookE(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookF(std::uint64_t a, std::uint64_t b);
    /// Whether the file is in no archive, or only in single-file archives that are outermost themselves.
    virtual bool isOutermost() const;
    /// Whether the client gets no targetFileReady when this file is copied; false by default.
    virtual bool fileFlagged() const;
    /// Copies every fork of `source` into this file. Data damage (a failed checksum, a corrupt Deflate
    /// stream) does not end the walk: the client is told of the first, and this file is kept and made
    /// visible. Any other failure passes through at once.
    virtual void adoptForks(const File& source);
    /// Copies `fork` into the fork of the same number here, or drops it if there is none. Raises
    /// un::implemented if `fork` can't be read.
    virtual void commitFork(const Fork& fork);
    /// Has `target` adopt the forks of this file.
    virtual void giveForksTo(File& target) const;
    /// Has `target` commit the fork, and marks the fork as committed.
    virtual void commitForkTo(const Fork& fork, File& target);

    /// The archive stored in this file, unopened and counted; null if no format recognises one.
    Archive* acquireStreamArchive();
    /// The same by the classifier's acquireFileArchive, to which `a` and `b` are passed. With `follow`, a
    /// single-file archive is opened and the archive in its file returned, down to the innermost one; the
    /// outer ones stay open for it.
    Archive* acquireArchive(bool follow, std::uint32_t a, std::uint32_t b);

    const Format* containerFormat = nullptr; ///< the format of the archive to make in this file; not owned

protected:
    File() = default;
};

} // namespace harbor6

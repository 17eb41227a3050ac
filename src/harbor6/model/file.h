#pragma once

#include "harbor6/model/item.h"
#include "harbor6/shell/fork.h"
#include "harbor6/shell/iterator.h"

namespace harbor6 {

/// A leaf of the item tree. Its data lies in one or more numbered forks. The defaults refuse or give nothing;
/// a concrete file overrides what it can do.
class HARBOR6_API File : public virtual Item, public pattern::TraversableConst<const Fork*> {
public:
    ~File() override;

    const File* asFile() const override;
    File* asFile() override;

    /// Walks the main fork alone.
    std::unique_ptr<pattern::Iterator<const Fork*>> createIterator() const override;
    /// Takes over the content of `other`: its forks, or, if this file is an archive, the item as a whole.
    virtual void adopt(File* other);
    virtual void adopt(Item* other);
    /// Raises un::implemented, where a class doesn't do better.
    virtual void adoptFileContents(File& other);
    /// The fork of number 0. The const form raises un::implemented, where a class doesn't do better.
    virtual Fork* getMainFork();
    virtual const Fork* getMainFork() const;
    /// Null for a number that the file doesn't have.
    virtual Fork* getFork(unsigned id);
    virtual const Fork* getFork(unsigned id) const;
    /// Creates the target if need be, gives it the forks and commits it.
    virtual void copyTo(File& target) const;
    /// Copies the file into nothing; the client hears of damage.
    virtual void testContents() const;
    /// Streams on the file as a whole, empty by default; what `x` means is the overriding class's affair.
    virtual data::CountedInput input(std::uint64_t x);
    virtual data::random::CountedInput randomInput(std::uint64_t x);
    /// Raises un::implemented, where a class doesn't do better.
    virtual Transform& expansionTransform();
    /// A stream that writes into `target` through the file's compression transform; empty without one.
    virtual data::CountedOutput output(data::CountedOutput& target);
    /// As randomInput.
    virtual data::random::CountedOutput randomOutput(std::uint64_t x);
    /// Counted for the caller; null by default.
    virtual Transform* compressionTransform();
    /// These keep their places in the table; nothing calls them.
    virtual void reservedFileHookA(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookB(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookC(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookD(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookE(std::uint64_t a, std::uint64_t b);
    virtual void reservedFileHookF(std::uint64_t a, std::uint64_t b);
    /// It lies in no archive, or only in archives of single-file formats that stand outermost themselves.
    virtual bool isOutermost() const;
    /// Whether the client is spared targetFileReady when this file is copied; false.
    virtual bool fileFlagged() const;
    /// Commits every fork of `source` here. Damaged data (a checksum, a decoder) doesn't end the walk: the
    /// client hears of the first, and this file stays, visible. All other failures leave at once.
    virtual void adoptForks(const File& source);
    /// Brings the bytes of `fork` into the fork of that number here; without one they are dropped.
    virtual void commitFork(const Fork& fork);
    virtual void giveForksTo(File& target) const;
    virtual void commitForkTo(const Fork& fork, File& target);

    /// The archive that this file is, unopened and counted, or null.
    Archive* acquireStreamArchive();
    /// The same through the classifier's acquireFileArchive, which gets `a` and `b`. With `follow`, a chain
    /// of single-file wrappers is opened down to the innermost archive.
    Archive* acquireArchive(bool follow, std::uint32_t a, std::uint32_t b);

    const Format* containerFormat = nullptr; ///< the format of the archive that this file is, not counted

protected:
    File() = default;
};

} // namespace harbor6

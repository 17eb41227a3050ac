#pragma once

#include "model/file.h"
#include "model/infinite_item.h"

namespace harbor6 {

/// A fork that takes whatever is written.
class HARBOR6_API InfiniteFork : public Fork {
public:
    ~InfiniteFork() override;

    data::CountedOutput output(bool expanding) override;
};

/// A file that takes a copy and keeps nothing, with which a file is tested. It lives for one copy.
class HARBOR6_API InfiniteFile : public virtual InfiniteItem, public File {
public:
    /// `parent`, which may be null, is not counted.
    InfiniteFile(HarborShell& shell, Folder* parent);
    ~InfiniteFile() override;

    using File::adopt;
    using File::getMainFork;

    void adopt(File* other) override;
    Fork* getMainFork() override;
    /// Whatever fork is asked for.
    Fork* getFork(unsigned id) override;
    using File::getFork;
    /// Runs the source's expansion into nothing.
    void commitFork(const Fork& source) override;
    Folder* acquireParent() override;
    void destroy() override;

private:
    Folder* parent;
    InfiniteFork fork;
};

} // namespace harbor6

#include "model/infinite_file.h"

#include "model/folder.h"
#include "stream/infinite_output.h"

namespace harbor6 {

InfiniteFork::~InfiniteFork() = default;

data::CountedOutput InfiniteFork::output(bool /*expanding*/) {
    return data::CountedOutput(new stream::infinite_output);
}

InfiniteFile::InfiniteFile(HarborShell& shell, Folder* holder) : InfiniteItem(shell), parent(holder) {}

InfiniteFile::~InfiniteFile() = default;

void InfiniteFile::adopt(File* other) {
    other->copyTo(*this);
}

Fork* InfiniteFile::getMainFork() {
    return getFork(0);
}

Fork* InfiniteFile::getFork(unsigned id) {
    fork.id = id;
    return &fork;
}

void InfiniteFile::commitFork(const Fork& source) {
    const pattern::AcquiredPtr<Transform> transform(&source.acquireExpansionTransform());
    const auto out = fork.output(true);
    transform->setOutput(out);
    transform->run();
    transform->finishRun();
}

Folder* InfiniteFile::acquireParent() {
    if (parent)
        parent->addReference();
    return parent;
}

void InfiniteFile::destroy() {
    delete this;
}

} // namespace harbor6

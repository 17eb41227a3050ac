#include "harbor6/model/single_fork_file.h"

namespace harbor6 {

SimpleFork::SimpleFork(File* file) : owner(file) {}

SimpleFork::~SimpleFork() = default;

SingleForkFile::SingleForkFile() = default;

SingleForkFile::~SingleForkFile() = default;

SingleForkIterator::SingleForkIterator(const File* walked) : file(walked) {}

SingleForkIterator::~SingleForkIterator() = default;

void SingleForkIterator::first() {
    currentFork = file->getMainFork();
}

void SingleForkIterator::next() {
    currentFork = nullptr;
}

bool SingleForkIterator::isDone() const {
    return currentFork == nullptr;
}

const Fork* SingleForkIterator::current() {
    return currentFork;
}

} // namespace harbor6

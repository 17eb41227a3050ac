#include "harbor6/model/single_fork_file.h"

namespace harbor6 {

SimpleFork::SimpleFork(File* file) : owner(file) {}

SimpleFork::~SimpleFork() = default;

SingleForkFile::SingleForkFile() : fork(this) {}

SingleForkFile::~SingleForkFile() = default;

Fork* SingleForkFile::getMainFork() {
    return &fork;
}

const Fork* SingleForkFile::getMainFork() const {
    return &fork;
}

Fork* SingleForkFile::getFork(unsigned id) {
    return id == 0 ? getMainFork() : nullptr;
}

const Fork* SingleForkFile::getFork(unsigned id) const {
    return id == 0 ? getMainFork() : nullptr;
}

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

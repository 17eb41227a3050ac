#include "harbor6/model/single_fork_file.h"

namespace harbor6 {

SimpleFork::SimpleFork(File* holder) : owner(holder) {}

SimpleFork::~SimpleFork() = default;

bool SimpleFork::available(const std::string& key) const {
    return owner->available(key);
}

bool SimpleFork::modifiable(const std::string& key) {
    return owner->modifiable(key);
}

bool SimpleFork::hasBoolean(const std::string& key) const {
    return owner->hasBoolean(key);
}

bool SimpleFork::getBoolean(const std::string& key, bool& value) const {
    return owner->getBoolean(key, value);
}

bool SimpleFork::setBoolean(const std::string& key, bool value) {
    return owner->setBoolean(key, value);
}

bool SimpleFork::hasString(const std::string& key) const {
    return owner->hasString(key);
}

bool SimpleFork::getString(const std::string& key, std::string& value) const {
    return owner->getString(key, value);
}

bool SimpleFork::setString(const std::string& key, const std::string& value) {
    return owner->setString(key, value);
}

bool SimpleFork::hasTime(const std::string& key) const {
    return owner->hasTime(key);
}

bool SimpleFork::getTime(const std::string& key, any::time& value) const {
    return owner->getTime(key, value);
}

bool SimpleFork::setTime(const std::string& key, const any::time& value) {
    return owner->setTime(key, value);
}

bool SimpleFork::hasInteger(const std::string& key) const {
    return owner->hasInteger(key);
}

bool SimpleFork::getInteger(const std::string& key, std::int64_t& value) const {
    return owner->getInteger(key, value);
}

bool SimpleFork::setInteger(const std::string& key, const std::int64_t& value) {
    return owner->setInteger(key, value);
}

bool SimpleFork::hasStructure(const std::string& key) const {
    return owner->hasStructure(key);
}

bool SimpleFork::getStructure(const std::string& key, un::structure& value) const {
    return owner->getStructure(key, value);
}

bool SimpleFork::setStructure(const std::string& key, const un::structure& value) {
    return owner->setStructure(key, value);
}

const Attributes* SimpleFork::attributes(const std::string& key) const {
    return owner->attributes(key);
}

Attributes* SimpleFork::attributes(const std::string& key) {
    return owner->attributes(key);
}

void SimpleFork::cloneAttributes(const Attributes& source, bool withName) {
    owner->cloneAttributes(source, withName);
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

template class OneForkFile<SimpleFork>;

} // namespace harbor6

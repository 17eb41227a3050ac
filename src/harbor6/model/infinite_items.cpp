#include "harbor6/model/infinite_items.h"

#include "harbor6/model/folder.h"
#include "harbor6/stream/output.h"

namespace harbor6 {

InfiniteItem::InfiniteItem(HarborShell& shell) : own_format(&shell) {}

InfiniteItem::~InfiniteItem() = default;

const Format& InfiniteItem::format() const {
    return own_format;
}

Format& InfiniteItem::format() {
    return own_format;
}

HarborShell& InfiniteItem::shell() const {
    return *own_format.shell;
}

bool InfiniteItem::isCreated() {
    return false;
}

bool InfiniteItem::modifiable(const std::string& /*key*/) {
    return true;
}

bool InfiniteItem::hasBoolean(const std::string& /*key*/) const {
    return false;
}

bool InfiniteItem::getBoolean(const std::string& /*key*/, bool& /*value*/) const {
    return false;
}

bool InfiniteItem::setBoolean(const std::string& /*key*/, bool /*value*/) {
    return true;
}

bool InfiniteItem::getString(const std::string& key, std::string& value) const {
    if (key != key::name)
        return Item::getString(key, value);
    value = name;
    return true;
}

bool InfiniteItem::setString(const std::string& /*key*/, const std::string& /*value*/) {
    return true;
}

bool InfiniteItem::setTime(const std::string& /*key*/, const any::time& /*value*/) {
    return true;
}

bool InfiniteItem::hasInteger(const std::string& /*key*/) const {
    return false;
}

bool InfiniteItem::getInteger(const std::string& /*key*/, std::int64_t& /*value*/) const {
    return false;
}

bool InfiniteItem::setInteger(const std::string& /*key*/, const std::int64_t& /*value*/) {
    return true;
}

bool InfiniteItem::setStructure(const std::string& /*key*/, const un::structure& /*value*/) {
    return true;
}

void InfiniteItem::cloneAttributes(const Attributes& source, bool withName) {
    if (withName)
        source.getString(key::name, name);
}

bool InfiniteItem::cloneStructure(const std::string& /*key*/, const Attributes& /*source*/) {
    return false;
}

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
    auto out = fork.output(true);
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

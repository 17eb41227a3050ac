#include "harbor6/model/container.h"

#include "harbor6/model/folder.h"
#include "harbor6/shell/ref_counted.h"

namespace harbor6 {

namespace {

template<class T>
class EmptyIterator : public pattern::Iterator<T> {
public:
    void first() override {}
    void next() override {}
    bool isDone() const override { return true; }
    T current() override { return nullptr; }
};

} // namespace

Container::~Container() = default;

std::unique_ptr<pattern::Iterator<Item*>> Container::createIterator() {
    return std::make_unique<EmptyIterator<Item*>>();
}

std::unique_ptr<pattern::Iterator<const Item*>> Container::createIterator() const {
    return std::make_unique<EmptyIterator<const Item*>>();
}

void Container::addContentTo(Folder& target, ContainerAdaptor* added) const {
    target._addContent(*this, added);
}

void Container::eraseContent() {
    ItemIterator items(*this);
    for (items.first(); !items.isDone(); items.next())
        pattern::AcquiredPtr<Item>(items.current())->erase();
}

bool Container::getNumItems(std::int64_t& count, bool /*deep*/) const {
    count = 0;
    ConstItemIterator items(*this);
    for (items.first(); !items.isDone(); items.next())
        ++count;
    return true;
}

bool Container::hasPluralContent(bool& plural, bool /*deep*/) const {
    ConstItemIterator items(*this);
    items.first();
    if (!items.isDone())
        items.next();
    plural = !items.isDone();
    return true;
}

const Item* Container::acquireFirstItem() const {
    ConstItemIterator items(*this);
    items.first();
    return items.isDone() ? nullptr : items.current();
}

ContainerAdaptor::~ContainerAdaptor() = default;

void ContainerAdaptor::destroy() {
    delete this;
}

StdVectorContainer::StdVectorContainer() : STLContainerAdaptor(&held) {}

StdVectorContainer::~StdVectorContainer() = default;

} // namespace harbor6

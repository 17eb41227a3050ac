#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/model/item.h"
#include "harbor6/shell/iterator.h"

#include <cstdint>
#include <vector>

namespace harbor6 {

class ContainerAdaptor;
class Folder;

/// Whatever holds items in an order. This one is empty; a class that holds something overrides
/// createIterator, from which the other operations follow.
class HARBOR6_API Container : public pattern::Traversable<Item*>,
                              public pattern::TraversableConst<const Item*> {
public:
    Container() = default;
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override;
    ~Container() override;
    /// Copies the content into `target`; each new top-level item goes to `added` too, unless that is null.
    virtual void addContentTo(Folder& target, ContainerAdaptor* added) const;
    /// Erases every item in order; an exception leaves the rest.
    virtual void eraseContent();
    virtual bool getNumItems(std::int64_t& count, bool deep) const;
    /// Whether there is more than one item.
    virtual bool hasPluralContent(bool& plural, bool deep) const;
    /// The first item with a reference for the caller, null if there is none.
    virtual const Item* acquireFirstItem() const;
};

/// A counted list of items, in which operations hand back what they made.
class HARBOR6_API ContainerAdaptor : public pattern::RefCounted, public Container {
public:
    ~ContainerAdaptor() override;

    void destroy() override;
    /// Appends `item` with a reference of its own.
    virtual void containerAdd(Item& item) = 0;
};

/// A walk over a standard container; adding to the container ends it.
template<class Sequence, class T, class Position>
class STLContainerIterator : public pattern::Iterator<T> {
public:
    explicit STLContainerIterator(Sequence& walked) : items(&walked), position(walked.begin()) {}

    void first() override { position = items->begin(); }
    void next() override {
        if (!isDone())
            ++position;
    }
    bool isDone() const override { return position == items->end(); }
    T current() override { return isDone() ? nullptr : position->acquire(); }

private:
    Sequence* items;
    Position position;
};

/// Works on a standard container of AcquiredPtr<Item>, which it doesn't own.
template<class Sequence>
class STLContainerAdaptor : public ContainerAdaptor {
public:
    explicit STLContainerAdaptor(Sequence* worked_on) : items(worked_on) {}

    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override {
        return std::make_unique<STLContainerIterator<Sequence, Item*, typename Sequence::iterator>>(*items);
    }
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override {
        return std::make_unique<
            STLContainerIterator<const Sequence, const Item*, typename Sequence::const_iterator>>(*items);
    }
    void eraseContent() override {
        for (auto& item : *items)
            item->erase();
    }
    bool getNumItems(std::int64_t& count, bool /*deep*/) const override {
        count = static_cast<std::int64_t>(items->size());
        return true;
    }
    bool hasPluralContent(bool& plural, bool /*deep*/) const override {
        plural = items->size() > 1;
        return true;
    }
    const Item* acquireFirstItem() const override {
        return items->empty() ? nullptr : items->front().acquire();
    }
    void containerAdd(Item& item) override { items->push_back(pattern::AcquiredPtr<Item>::sharing(item)); }

private:
    Sequence* items;
};

class HARBOR6_API StdVectorContainer : public STLContainerAdaptor<std::vector<pattern::AcquiredPtr<Item>>> {
public:
    StdVectorContainer();
    ~StdVectorContainer() override;

private:
    std::vector<pattern::AcquiredPtr<Item>> held;
};

} // namespace harbor6

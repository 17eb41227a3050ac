#pragma once

#include "harbor6/groundwork/export.h"
#include "harbor6/model/item.h"
#include "harbor6/shell/iterator.h"

#include <cstdint>
#include <vector>

namespace harbor6 {

class ContainerAdaptor;
class Folder;

/// Contains items in an order. This one is empty; a class that contains some overrides createIterator, on
/// which the other operations are built. Used by one thread at a time. What createIterator and its iterator
/// raise passes through every operation.
class HARBOR6_API Container : public pattern::Traversable<Item*>,
                              public pattern::TraversableConst<const Item*> {
public:
    Container() = default;
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

    /// A walk over the items, whose current() carries a reference; never null.
    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override;
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override;
    ~Container() override;
    /// Copies the content into `target`. Each new top-level item is added to `added` too, unless that is
    /// null.
    virtual void addContentTo(Folder& target, ContainerAdaptor* added) const;
    /// Erases every item in order. What the erase of an item raises ends the walk and leaves the rest.
    virtual void eraseContent();
    /// Sets `count` to the number of items directly in here, whatever `deep` is; false if it is unknown.
    virtual bool getNumItems(std::int64_t& count, bool deep) const;
    /// Sets `plural` to whether there is more than one item; false if that is unknown.
    virtual bool hasPluralContent(bool& plural, bool deep) const;
    /// The first item with a reference for the caller; null if there is none.
    virtual const Item* acquireFirstItem() const;
};

/// A counted list of items, in which operations return what they made. It keeps its items alive.
class HARBOR6_API ContainerAdaptor : public pattern::RefCounted, public Container {
public:
    ~ContainerAdaptor() override;

    void destroy() override;
    /// Appends `item` with a reference of its own.
    virtual void containerAdd(Item& item) = 0;
};

/// The list over a standard container of AcquiredPtr<Item>, which it doesn't own. Iterators end with the next
/// containerAdd.
template<class Sequence, class Position = typename Sequence::iterator,
         class ConstPosition = typename Sequence::const_iterator>
class STLContainerAdaptor : public ContainerAdaptor {
public:
    class STLContainerIterator : public pattern::STLContainerIterator<Sequence, Item*, Position> {
    public:
        using pattern::STLContainerIterator<Sequence, Item*, Position>::STLContainerIterator;

        Item* current() override { return this->isDone() ? nullptr : this->position->acquire(); }
    };
    class STLConstContainerIterator
        : public pattern::STLContainerIterator<const Sequence, const Item*, ConstPosition> {
    public:
        using pattern::STLContainerIterator<const Sequence, const Item*, ConstPosition>::STLContainerIterator;

        const Item* current() override { return this->isDone() ? nullptr : this->position->acquire(); }
    };

    explicit STLContainerAdaptor(Sequence* adapted) : items(adapted) {}

    std::unique_ptr<pattern::Iterator<Item*>> createIterator() override {
        return std::make_unique<STLContainerIterator>(*items);
    }
    std::unique_ptr<pattern::Iterator<const Item*>> createIterator() const override {
        return std::make_unique<STLConstContainerIterator>(*items);
    }
    /// The list keeps its entries.
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

using ItemVector = std::vector<pattern::AcquiredPtr<Item>>;

/// The list that owns its container; empty at first.
class HARBOR6_API StdVectorContainer : public STLContainerAdaptor<ItemVector> {
public:
    StdVectorContainer();
    ~StdVectorContainer() override;

private:
    ItemVector held;
};

} // namespace harbor6

#pragma once

#include "outside/groundwork/export.h"
#include "outside/shell/iterator.h"

#include <cstdint>

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

} // namespace harbor6

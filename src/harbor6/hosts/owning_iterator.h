#pragma once

#include "harbor6/model/item.h"
#include "harbor6/shell/iterator.h"

#include <memory>
#include <vector>

namespace host {

using owned_items = std::vector<pattern::AcquiredPtr<harbor6::Item>>;

/// A base of OwningIterator, so that the items are constructed before the iterator over them.
struct items_holder {
    owned_items items;
};

/// Iterates over items that it owns. T is harbor6::Item* or const harbor6::Item*.
template<class T>
class OwningIterator : private items_holder,
                       public pattern::STLContainerIterator<owned_items, T, owned_items::iterator> {
public:
    explicit OwningIterator(owned_items taken)
        : items_holder{std::move(taken)},
          pattern::STLContainerIterator<owned_items, T, owned_items::iterator>(items) {}

    T current() override { return this->isDone() ? nullptr : this->position->acquire(); }
};

} // namespace host

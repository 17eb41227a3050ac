#pragma once

#include <memory>

namespace pattern {

/// A walk over what `T` values refer to: call first(), then current() and next() until isDone(). It must not
/// outlive what it walks, and is used by one thread at a time.
template<class T>
class Iterator {
public:
    Iterator() = default;
    Iterator(const Iterator&) = delete;
    Iterator& operator=(const Iterator&) = delete;
    virtual ~Iterator() = default;

    /// Goes to the first element. May raise if the elements cannot be read.
    virtual void first() = 0;
    /// Goes to the next element; nothing if isDone().
    virtual void next() = 0;
    /// Whether the walk has passed the last element.
    virtual bool isDone() const = 0;
    /// The element reached, null if isDone(). An item comes with a reference for the caller, a fork doesn't.
    virtual T current() = 0;
};

/// Something that can be walked. createIterator() returns a new iterator; call first() before current().
template<class T>
class Traversable {
public:
    virtual std::unique_ptr<Iterator<T>> createIterator() = 0; // the table begins with it
    virtual ~Traversable() = default;
};

template<class T>
class TraversableConst {
public:
    virtual std::unique_ptr<Iterator<T>> createIterator() const = 0;
    virtual ~TraversableConst() = default;
};

/// The position of a walk over a standard container, to which a derived class adds current(). Adding to the
/// container ends the walk.
template<class Container, class T, class Position>
class STLContainerIterator : public Iterator<T> {
public:
    explicit STLContainerIterator(Container& walked) : container(&walked), position(walked.begin()) {}

    void first() override { position = container->begin(); }
    void next() override {
        if (!this->isDone())
            ++position;
    }
    bool isDone() const override { return position == container->end(); }

protected:
    Container* container;
    Position position;
};

} // namespace pattern

namespace harbor6 {

class Item;

/// A walk over a Traversable, as a local variable. createIterator() must not return null.
template<class T>
class Iterator : public pattern::Iterator<T*> {
public:
    explicit Iterator(pattern::Traversable<T*>& walked) : inner(walked.createIterator()) {}

    void first() override { inner->first(); }
    void next() override { inner->next(); }
    bool isDone() const override { return inner->isDone(); }
    T* current() override { return inner->current(); }

protected:
    std::unique_ptr<pattern::Iterator<T*>> inner;
};

/// The same over a TraversableConst. A null iterator is an empty walk.
template<class T>
class ConstIterator : public pattern::Iterator<const T*> {
public:
    explicit ConstIterator(const pattern::TraversableConst<const T*>& walked)
        : inner(walked.createIterator()) {}

    void first() override {
        if (inner)
            inner->first();
    }
    void next() override {
        if (inner)
            inner->next();
    }
    bool isDone() const override { return !inner || inner->isDone(); }
    const T* current() override { return inner ? inner->current() : nullptr; }

protected:
    std::unique_ptr<pattern::Iterator<const T*>> inner;
};

/// Walks over the items of a container. current() returns a counted item.
class ItemIterator : public Iterator<Item> {
public:
    using Iterator<Item>::Iterator;

    Item* current() override { return inner->current(); }
};

class ConstItemIterator : public ConstIterator<Item> {
public:
    using ConstIterator<Item>::ConstIterator;

    const Item* current() override { return inner ? inner->current() : nullptr; }
};

} // namespace harbor6

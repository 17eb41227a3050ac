#pragma once

#include <memory>

namespace pattern {

/// A walk: first(), then current() and next() while isDone() is false. It must not outlive what it walks.
/// current() of a walk over items carries a reference for the caller.
template<class T>
class Iterator {
public:
    Iterator() = default;
    Iterator(const Iterator&) = delete;
    Iterator& operator=(const Iterator&) = delete;
    virtual ~Iterator() = default;

    virtual void first() = 0;
    virtual void next() = 0;
    virtual bool isDone() const = 0;
    virtual T current() = 0;
};

template<class T>
class Traversable {
public:
    virtual ~Traversable() = default;
    virtual std::unique_ptr<Iterator<T>> createIterator() = 0;
};

template<class T>
class TraversableConst {
public:
    virtual ~TraversableConst() = default;
    virtual std::unique_ptr<Iterator<T>> createIterator() const = 0;
};

} // namespace pattern

namespace harbor6 {

class Item;

/// Holds the iterator of a Traversable, which must give a real one.
template<class T>
class Iterator : public pattern::Iterator<T*> {
public:
    explicit Iterator(pattern::Traversable<T*>& walked) : inner(walked.createIterator()) {}

    void first() override { inner->first(); }
    void next() override { inner->next(); }
    bool isDone() const override { return inner->isDone(); }
    T* current() override { return inner->current(); }

private:
    std::unique_ptr<pattern::Iterator<T*>> inner;
};

/// Holds the iterator of a TraversableConst; none at all is an empty walk.
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

private:
    std::unique_ptr<pattern::Iterator<const T*>> inner;
};

using ItemIterator = Iterator<Item>;
using ConstItemIterator = ConstIterator<Item>;

} // namespace harbor6

#pragma once

#include "harbor6/model/file.h"

#include <concepts>
#include <utility>

namespace harbor6 {

/// The fork of a file that has one. All its attributes are those of the file that contains it, which outlives
/// it. A class that has data overrides the streams.
class HARBOR6_API SimpleFork : public Fork {
public:
    explicit SimpleFork(File* owner);
    ~SimpleFork() override;

    using Key = const std::string&;
    bool available(Key key) const override { return owner->available(key); }
    bool modifiable(Key key) override { return owner->modifiable(key); }
    bool hasBoolean(Key key) const override { return owner->hasBoolean(key); }
    bool getBoolean(Key key, bool& value) const override { return owner->getBoolean(key, value); }
    bool setBoolean(Key key, bool value) override { return owner->setBoolean(key, value); }
    bool hasString(Key key) const override { return owner->hasString(key); }
    bool getString(Key key, std::string& value) const override { return owner->getString(key, value); }
    bool setString(Key key, const std::string& value) override { return owner->setString(key, value); }
    bool hasTime(Key key) const override { return owner->hasTime(key); }
    bool getTime(Key key, any::time& value) const override { return owner->getTime(key, value); }
    bool setTime(Key key, const any::time& value) override { return owner->setTime(key, value); }
    bool hasInteger(Key key) const override { return owner->hasInteger(key); }
    bool getInteger(Key key, std::int64_t& value) const override { return owner->getInteger(key, value); }
    bool setInteger(Key key, const std::int64_t& value) override { return owner->setInteger(key, value); }
    bool hasStructure(Key key) const override { return owner->hasStructure(key); }
    bool getStructure(Key key, un::structure& value) const override {
        return owner->getStructure(key, value);
    }
    bool setStructure(Key key, const un::structure& value) override {
        return owner->setStructure(key, value);
    }
    const Attributes* attributes(Key key) const override { return owner->attributes(key); }
    Attributes* attributes(Key key) override { return owner->attributes(key); }
    void cloneAttributes(const Attributes& source, bool withName) override {
        owner->cloneAttributes(source, withName);
    }

protected:
    File* owner;
};

/// A file with exactly one fork, of the class `OwnFork`, which has the number 0.
template<class OwnFork>
class OneForkFile : public virtual File {
public:
    Fork* getMainFork() override { return &fork; }
    const Fork* getMainFork() const override { return &fork; }
    Fork* getFork(unsigned id) override { return id == 0 ? getMainFork() : nullptr; }
    const Fork* getFork(unsigned id) const override { return id == 0 ? getMainFork() : nullptr; }

protected:
    /// A fork that wants to know its file gets it.
    OneForkFile() requires std::constructible_from<OwnFork, File*> : fork(this) {}
    template<class... Arguments>
    explicit OneForkFile(Arguments&&... arguments) : fork(std::forward<Arguments>(arguments)...) {}

    OwnFork fork;
};

/// A file whose one fork has no data.
class HARBOR6_API SingleForkFile : public OneForkFile<SimpleFork> {
public:
    ~SingleForkFile() override;

protected:
    SingleForkFile();
};

/// Walks over the main fork of a file alone. Raises on first() what getMainFork raises.
class HARBOR6_API SingleForkIterator : public pattern::Iterator<const Fork*> {
public:
    explicit SingleForkIterator(const File* file);
    ~SingleForkIterator() override;

    void first() override;
    void next() override;
    bool isDone() const override;
    const Fork* current() override;

private:
    const File* file;
    const Fork* currentFork = nullptr;
};

} // namespace harbor6

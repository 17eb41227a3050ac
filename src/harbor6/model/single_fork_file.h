#pragma once

#include "harbor6/model/file.h"

#include <concepts>
#include <utility>

namespace harbor6 {

/// A file with exactly one fork, of the class `OwnFork`, whose number is 0.
template<class OwnFork>
class OneForkFile : public virtual File {
public:
    Fork* getMainFork() override { return &fork; }
    const Fork* getMainFork() const override { return &fork; }
    Fork* getFork(unsigned id) override { return id == 0 ? getMainFork() : nullptr; }
    const Fork* getFork(unsigned id) const override { return id == 0 ? getMainFork() : nullptr; }

protected:
    /// A fork that wants to know the file that holds it is told.
    OneForkFile() requires std::constructible_from<OwnFork, File*> : fork(this) {}
    template<class... Arguments>
    explicit OneForkFile(Arguments&&... arguments) : fork(std::forward<Arguments>(arguments)...) {}

    OwnFork fork;
};

/// The fork of a file that has one. It has no attributes of its own: it asks the file that holds it, which is
/// not counted.
class HARBOR6_API SimpleFork : public Fork {
public:
    explicit SimpleFork(File* owner);
    ~SimpleFork() override;

    bool available(const std::string& key) const override;
    bool modifiable(const std::string& key) override;
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool setBoolean(const std::string& key, bool value) override;
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool setString(const std::string& key, const std::string& value) override;
    bool hasTime(const std::string& key) const override;
    bool getTime(const std::string& key, any::time& value) const override;
    bool setTime(const std::string& key, const any::time& value) override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    bool setInteger(const std::string& key, const std::int64_t& value) override;
    bool hasStructure(const std::string& key) const override;
    bool getStructure(const std::string& key, un::structure& value) const override;
    bool setStructure(const std::string& key, const un::structure& value) override;
    const Attributes* attributes(const std::string& key) const override;
    Attributes* attributes(const std::string& key) override;
    void cloneAttributes(const Attributes& source, bool withName) override;

protected:
    File* owner;
};

/// Walks the main fork of a file, and no other.
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

/// A file whose one fork asks it for everything.
using SingleForkFile = OneForkFile<SimpleFork>;
extern template class HARBOR6_API OneForkFile<SimpleFork>; // formats and hosts share one

} // namespace harbor6

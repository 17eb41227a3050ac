#pragma once

#include "harbor6/model/file.h"
#include "harbor6/model/format.h"
#include "harbor6/model/item.h"

namespace harbor6 {

/// Takes everything and keeps nothing but a name.
class HARBOR6_API InfiniteItem : public virtual Item {
public:
    explicit InfiniteItem(HarborShell& shell);
    ~InfiniteItem() override;

    const Format& format() const override;
    Format& format() override;
    HarborShell& shell() const override;
    bool isCreated() override;

    bool modifiable(const std::string& key) override;
    bool hasBoolean(const std::string& key) const override;
    bool getBoolean(const std::string& key, bool& value) const override;
    bool setBoolean(const std::string& key, bool value) override;
    bool getString(const std::string& key, std::string& value) const override;
    bool setString(const std::string& key, const std::string& value) override;
    bool setTime(const std::string& key, const any::time& value) override;
    bool hasInteger(const std::string& key) const override;
    bool getInteger(const std::string& key, std::int64_t& value) const override;
    bool setInteger(const std::string& key, const std::int64_t& value) override;
    bool setStructure(const std::string& key, const un::structure& value) override;
    /// Takes the name, if asked to, and nothing else.
    void cloneAttributes(const Attributes& source, bool withName) override;

protected:
    bool cloneStructure(const std::string& key, const Attributes& source) override;

private:
    Format held_format;
    std::string name;
};

/// A fork that takes whatever is written.
class HARBOR6_API InfiniteFork : public Fork {
public:
    ~InfiniteFork() override;

    data::CountedOutput output(bool expanding) override;
};

/// A file that takes a copy and keeps nothing, with which a file is tested. It lives for one copy.
class HARBOR6_API InfiniteFile : public virtual InfiniteItem, public File {
public:
    /// `parent`, which may be null, is not counted.
    InfiniteFile(HarborShell& shell, Folder* parent);
    ~InfiniteFile() override;

    using File::adopt;
    using File::getMainFork;

    void adopt(File* other) override;
    Fork* getMainFork() override;
    /// Whatever fork is asked for.
    Fork* getFork(unsigned id) override;
    using File::getFork;
    /// Runs the source's expansion into nothing.
    void commitFork(const Fork& source) override;
    Folder* acquireParent() override;
    void destroy() override;

private:
    Folder* parent;
    InfiniteFork fork;
};

} // namespace harbor6

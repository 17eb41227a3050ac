#pragma once

#include "harbor6/model/file.h"
#include "harbor6/model/format.h"
#include "harbor6/model/item.h"

namespace harbor6 {

/// Accepts every value and keeps only a name, which cloneAttributes sets. `shell` must outlive it.
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
    /// Takes the name if `withName`, and nothing else.
    void cloneAttributes(const Attributes& source, bool withName) override;

protected:
    bool cloneStructure(const std::string& key, const Attributes& source) override;

private:
    Format own_format;
    std::string name;
};

/// A fork that discards what is written.
class HARBOR6_API InfiniteFork : public Fork {
public:
    ~InfiniteFork() override;

    data::CountedOutput output(bool expanding) override;
};

/// The target of a test: a file that takes a copy and discards it. It lives for one copy.
class HARBOR6_API InfiniteFile : public virtual InfiniteItem, public File {
public:
    /// `parent` is what acquireParent returns; it may be null and is not counted here.
    InfiniteFile(HarborShell& shell, Folder* parent);
    ~InfiniteFile() override;

    using File::adopt;
    using File::getMainFork;

    void adopt(File* other) override;
    Fork* getMainFork() override;
    /// The one fork, under any number.
    Fork* getFork(unsigned id) override;
    using File::getFork;
    /// Runs the source's expansion into the sink.
    void commitFork(const Fork& source) override;
    Folder* acquireParent() override;
    void destroy() override;

private:
    Folder* parent;
    InfiniteFork fork;
};

} // namespace harbor6

#pragma once

#include "model/format.h"
#include "model/item.h"

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

} // namespace harbor6

#pragma once

#include "harbor6/model/item.h"

#include <optional>
#include <utility>

namespace harbor6 {

/// Answers the attributes "name" and "modTime" by the four operations below, and the others as Item does.
class HARBOR6_API NameAndTime : public virtual Item {
public:
    bool hasString(const std::string& key) const override;
    bool getString(const std::string& key, std::string& value) const override;
    bool setString(const std::string& key, const std::string& value) override;
    bool hasTime(const std::string& key) const override;
    bool getTime(const std::string& key, any::time& value) const override;
    bool setTime(const std::string& key, const any::time& value) override;

protected:
    virtual std::string itemName() const = 0;
    /// The setters return whether the value was taken; by default it is not.
    virtual bool setItemName(const std::string& name);
    /// Empty if the item has no time, as by default.
    virtual std::optional<any::time> itemTime() const;
    virtual bool setItemTime(const any::time& time);

    /// Adds the keys of Item, "name" and, for files, "modTime".
    void populateIndex() const override;
};

/// Mixed into `Concrete`, a class of items made with new, beside its other bases: supplies destroy(), name
/// and time. All items of the class share one index, which the first of them fills.
template<class Concrete>
class NamedItem : public NameAndTime {
public:
    void destroy() override { delete this; }

protected:
    void populateIndex() const override {
        static bool filled = false;
        if (!filled)
            NameAndTime::populateIndex();
        filled = true;
    }
    Index* newIndex() const override {
        static Index keys;
        return &keys;
    }
};

} // namespace harbor6

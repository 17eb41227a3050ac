#pragma once

#include "harbor6/model/item.h"

#include <optional>
#include <utility>

namespace harbor6 {

/// Mixed into `Concrete`, a class of items made with new, beside its other bases: supplies destroy() and the
/// attributes "name" and, for files, "modTime" by the four operations below. All items of the class share one
/// index, which the first of them fills.
template<class Concrete>
class NamedItem : public virtual Item {
public:
    void destroy() override { delete this; }

    bool hasString(const std::string& key) const override {
        return idFromName(key) == key_id::name || Item::hasString(key);
    }
    bool getString(const std::string& key, std::string& value) const override {
        if (idFromName(key) != key_id::name)
            return Item::getString(key, value);
        value = itemName();
        return true;
    }
    bool setString(const std::string& key, const std::string& value) override {
        return idFromName(key) == key_id::name ? setItemName(value) : Item::setString(key, value);
    }
    bool hasTime(const std::string& key) const override {
        return idFromName(key) == key_id::modTime ? itemTime().has_value() : Item::hasTime(key);
    }
    bool getTime(const std::string& key, any::time& value) const override {
        const auto time = idFromName(key) == key_id::modTime ? itemTime() : std::nullopt;
        if (!time)
            return Item::getTime(key, value);
        value = *time;
        return true;
    }
    bool setTime(const std::string& key, const any::time& value) override {
        return idFromName(key) == key_id::modTime ? setItemTime(value) : Item::setTime(key, value);
    }

protected:
    virtual std::string itemName() const = 0;
    /// The setters return whether the value was taken; by default it is not.
    virtual bool setItemName(const std::string& /*name*/) { return false; }
    /// Empty if the item has no time.
    virtual std::optional<any::time> itemTime() const { return std::nullopt; }
    virtual bool setItemTime(const any::time& /*time*/) { return false; }

    void populateIndex() const override {
        static bool filled = false;
        if (std::exchange(filled, true))
            return;
        Item::populateIndex();
        index()[key::name] = key_id::name;
        if (asFile())
            index()[key::modTime] = key_id::modTime;
    }
    Index* newIndex() const override {
        static Index keys;
        return &keys;
    }
};

} // namespace harbor6

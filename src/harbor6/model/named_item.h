#pragma once

#include "harbor6/model/item.h"

#include <optional>
#include <utility>

namespace harbor6 {

/// Mixed into `Concrete`, a class of items that are made with new: it answers "name", and "modTime" for a
/// file, by the operations below, and gives all items of the class one index, which the first of them fills.
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
    /// The setters say whether the value was taken.
    virtual bool setItemName(const std::string& /*name*/) { return false; }
    /// Nothing if no time is known.
    virtual std::optional<any::time> itemTime() const { return std::nullopt; }
    virtual bool setItemTime(const any::time& /*time*/) { return false; }

    void populateIndex() const override {
        if (std::exchange(filled, true))
            return;
        Item::populateIndex();
        index()[key::name] = key_id::name;
        if (asFile())
            index()[key::modTime] = key_id::modTime;
    }
    Index* newIndex() const override { return &keys; }

    static inline bool filled = false; ///< the index has its keys

private:
    static inline Index keys;
};

} // namespace harbor6

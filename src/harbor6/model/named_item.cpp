#include "harbor6/model/named_item.h"

namespace harbor6 {

bool NameAndTime::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || Item::hasString(key);
}

bool NameAndTime::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Item::getString(key, value);
    value = itemName();
    return true;
}

bool NameAndTime::setString(const std::string& key, const std::string& value) {
    return idFromName(key) == key_id::name ? setItemName(value) : Item::setString(key, value);
}

bool NameAndTime::hasTime(const std::string& key) const {
    return idFromName(key) == key_id::modTime ? itemTime().has_value() : Item::hasTime(key);
}

bool NameAndTime::getTime(const std::string& key, any::time& value) const {
    const auto time = idFromName(key) == key_id::modTime ? itemTime() : std::nullopt;
    if (!time)
        return Item::getTime(key, value);
    value = *time;
    return true;
}

bool NameAndTime::setTime(const std::string& key, const any::time& value) {
    return idFromName(key) == key_id::modTime ? setItemTime(value) : Item::setTime(key, value);
}

bool NameAndTime::setItemName(const std::string& /*name*/) {
    return false;
}

std::optional<any::time> NameAndTime::itemTime() const {
    return std::nullopt;
}

bool NameAndTime::setItemTime(const any::time& /*time*/) {
    return false;
}

void NameAndTime::populateIndex() const {
    Item::populateIndex();
    index()[key::name] = key_id::name;
    if (asFile())
        index()[key::modTime] = key_id::modTime;
}

} // namespace harbor6

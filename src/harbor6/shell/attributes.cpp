#include "harbor6/shell/attributes.h"

#include <mutex>

namespace harbor6 {

Attributes::~Attributes() {
    if (owns_index)
        delete index_map;
}

bool Attributes::available(const std::string& key) const {
    return has(key);
}

bool Attributes::modifiable(const std::string& key) {
    return idFromName(key) != key_id::unknown;
}

bool Attributes::hasBoolean(const std::string& /*key*/) const {
    return false;
}

bool Attributes::boolean(const std::string& key) const {
    bool value = false;
    return getBoolean(key, value) && value;
}

bool Attributes::getBoolean(const std::string& /*key*/, bool& /*value*/) const {
    return false;
}

bool Attributes::setBoolean(const std::string& /*key*/, bool /*value*/) {
    return false;
}

bool Attributes::hasString(const std::string& /*key*/) const {
    return false;
}

std::string Attributes::string(const std::string& key) const {
    std::string value;
    return getString(key, value) ? value : std::string();
}

bool Attributes::getString(const std::string& /*key*/, std::string& /*value*/) const {
    return false;
}

bool Attributes::setString(const std::string& /*key*/, const std::string& /*value*/) {
    return false;
}

bool Attributes::hasTime(const std::string& /*key*/) const {
    return false;
}

any::time Attributes::time(const std::string& key) {
    any::time value;
    return getTime(key, value) ? value : any::time();
}

bool Attributes::getTime(const std::string& /*key*/, any::time& /*value*/) const {
    return false;
}

bool Attributes::setTime(const std::string& /*key*/, const any::time& /*value*/) {
    return false;
}

bool Attributes::hasInteger(const std::string& /*key*/) const {
    return false;
}

std::int64_t Attributes::integer(const std::string& key) const {
    std::int64_t value = 0;
    return getInteger(key, value) ? value : 0;
}

bool Attributes::getInteger(const std::string& /*key*/, std::int64_t& /*value*/) const {
    return false;
}

bool Attributes::setInteger(const std::string& /*key*/, const std::int64_t& /*value*/) {
    return false;
}

bool Attributes::hasStructure(const std::string& /*key*/) const {
    return false;
}

bool Attributes::getStructure(const std::string& /*key*/, un::structure& /*value*/) const {
    return false;
}

bool Attributes::setStructure(const std::string& /*key*/, const un::structure& /*value*/) {
    return false;
}

const Attributes* Attributes::attributes(const std::string& /*key*/) const {
    return nullptr;
}

Attributes* Attributes::attributes(const std::string& /*key*/) {
    return nullptr;
}

void Attributes::cloneAttributes(const Attributes& source, bool withName) {
    for (const auto& entry : source.index()) {
        const auto& key = entry.first;
        if ((key == key::name && !withName) || !modifiable(key))
            continue;
        bool flag = false;
        std::string text;
        any::time when;
        std::int64_t number = 0;
        if (source.hasBoolean(key) && source.getBoolean(key, flag))
            setBoolean(key, flag);
        if (source.hasString(key) && source.getString(key, text))
            setString(key, text);
        if (source.hasTime(key) && source.getTime(key, when))
            setTime(key, when);
        if (source.hasInteger(key) && source.getInteger(key, number))
            setInteger(key, number);
        if (source.hasStructure(key))
            cloneStructure(key, source);
    }
}

bool Attributes::has(const std::string& key) const {
    return hasBoolean(key) || hasString(key) || hasTime(key) || hasInteger(key) || hasStructure(key);
}

bool Attributes::cloneStructure(const std::string& /*key*/, const Attributes& /*source*/) {
    return false;
}

std::uint16_t Attributes::idFromName(const std::string& key) const {
    const auto& ids = index();
    const auto entry = ids.find(key);
    return entry == ids.end() ? key_id::unknown : entry->second;
}

void Attributes::populateIndex() const {}

Attributes::Index* Attributes::newIndex() const {
    owns_index = true;
    return new Index;
}

Attributes::Index& Attributes::index() const {
    if (!index_map) {
        // A shared index is filled by its first object, which may be any thread's.
        static std::mutex filling;
        const std::lock_guard lock(filling);
        index_map = newIndex();
        try {
            populateIndex();
        } catch (...) { // all keys or none: the next use fills it again
            index_map->clear();
            if (owns_index)
                delete index_map;
            index_map = nullptr;
            throw;
        }
    }
    return *index_map;
}

ModelAttributes::~ModelAttributes() = default;

bool ModelAttributes::modifiable(const std::string& /*key*/) {
    return false;
}

bool ModelAttributes::hasString(const std::string& key) const {
    return idFromName(key) == key_id::name || Attributes::hasString(key);
}

bool ModelAttributes::getString(const std::string& key, std::string& value) const {
    if (idFromName(key) != key_id::name)
        return Attributes::getString(key, value);
    value = name;
    return true;
}

bool ModelAttributes::hasStructure(const std::string& key) const {
    const auto id = idFromName(key);
    return id == key_id::fInfo || id == key_id::fXInfo || Attributes::hasStructure(key);
}

bool ModelAttributes::getStructure(const std::string& key, un::structure& value) const {
    switch (idFromName(key)) {
    case key_id::fInfo:
        return un::copy_to(value, file_info);
    case key_id::fXInfo:
        return un::copy_to(value, extended_info);
    default:
        return Attributes::getStructure(key, value);
    }
}

void ModelAttributes::populateIndex() const {
    index()[key::name] = key_id::name;
    index()[key::fInfo] = key_id::fInfo;
    index()[key::fXInfo] = key_id::fXInfo;
}

} // namespace harbor6

#include "outside/shell/model_attributes.h"

namespace harbor6 {

namespace {

template<class Structure>
bool copyInto(un::structure& target, const Structure& source) {
    auto* const same = dynamic_cast<Structure*>(&target);
    if (same)
        *same = source;
    return same != nullptr;
}

} // namespace

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
        return copyInto(value, file_info);
    case key_id::fXInfo:
        return copyInto(value, extended_info);
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

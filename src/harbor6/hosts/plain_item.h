#pragma once

#include "harbor6/model/named_item.h"
#include "harbor6/shell/structures.h"

namespace host {

/// Mixed into `Concrete`, a class of items outside any archive. Their format is the one for such items, which
/// outlives them.
template<class Concrete>
class PlainItem : public harbor6::NamedItem<Concrete> {
public:
    const harbor6::Format& format() const override { return plain; }
    harbor6::Format& format() override { return plain; }
    bool getStructure(const std::string& key, un::structure& value) const override {
        auto* const spec = key == harbor6::key::fsSpec ? dynamic_cast<fs::Spec*>(&value) : nullptr;
        const auto found = spec ? identity() : std::nullopt;
        if (found)
            *spec = *found;
        return found.has_value();
    }

protected:
    explicit PlainItem(harbor6::Format& plain_format) : plain(plain_format) {}

    /// The value of "fsSpec": which object on disk the item is, if it is one.
    virtual std::optional<fs::Spec> identity() const { return std::nullopt; }

private:
    harbor6::Format& plain;
};

} // namespace host

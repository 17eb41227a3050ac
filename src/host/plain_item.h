#pragma once

#include "model/named_item.h"
#include "outside/shell/file_identity.h"

namespace host {

/// Mixed into `Concrete`, a class of items that lie in no archive: they stand on disk or nowhere, and their
/// format is the one for such items, which outlives them.
template<class Concrete>
class PlainItem : public harbor6::NamedItem<Concrete> {
public:
    const harbor6::Format& format() const override { return plain; }
    harbor6::Format& format() override { return plain; }
    bool getStructure(const std::string& key, un::structure& value) const override {
        auto* const which = key == harbor6::key::fsSpec ? dynamic_cast<fs::Spec*>(&value) : nullptr;
        const auto mine = which ? identity() : std::nullopt;
        if (mine)
            *which = *mine;
        return mine.has_value();
    }

protected:
    explicit PlainItem(harbor6::Format& items) : plain(items) {}

    /// What "fsSpec" answers: which object on disk the item is, nothing if it is none.
    virtual std::optional<fs::Spec> identity() const { return std::nullopt; }

private:
    harbor6::Format& plain;
};

} // namespace host

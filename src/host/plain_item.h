#pragma once

#include "model/named_item.h"

namespace host {

/// Mixed into `Concrete`, a class of items that lie in no archive: they stand on disk or nowhere, and their
/// format is the one for such items, which outlives them.
template<class Concrete>
class PlainItem : public harbor6::NamedItem<Concrete> {
public:
    const harbor6::Format& format() const override { return plain; }
    harbor6::Format& format() override { return plain; }

protected:
    explicit PlainItem(harbor6::Format& items) : plain(items) {}

private:
    harbor6::Format& plain;
};

} // namespace host

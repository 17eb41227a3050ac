#pragma once

#include "model/format.h"

namespace harbor6 {

/// The base of formats whose archives derive from SuperArchive.
class HARBOR6_API SuperFormat : public Format {
public:
    using Format::Format;
    ~SuperFormat() override;
};

} // namespace harbor6

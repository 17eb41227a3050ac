#pragma once

#include "model/super_format.h"

namespace harbor6::cab {

/// The Microsoft Cabinet, described to the host: cabinets are expanded, never made.
class Format : public SuperFormat {
public:
    explicit Format(HarborShell* shell);
    ~Format() override;

    Archive* _newArchiveAtItem(File* file, unsigned mode) override;
    std::unique_ptr<format::classifier> _newClassifier() override;
};

} // namespace harbor6::cab

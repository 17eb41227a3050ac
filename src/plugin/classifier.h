#pragma once

#include "format/cab/archive_header.h"
#include "model/classifier.h"

namespace format::cab {

/// Recognises cabinets. Each confirm_at reads into the same header, so a classifier serves one call at a
/// time.
class classifier : public format::classifier {
public:
    explicit classifier(std::uint32_t identifier);
    ~classifier() override;

    /// Wants one byte more than the signature.
    unsigned matches_at(unsigned offset) const override;
    /// Reads the header without refusing anything, and takes a cabinet that is sound and the first of its
    /// set; one of another version, too, or one that continues, which expansion refuses with a message.
    bool confirm_at(unsigned offset) override;

private:
    archive_header header;
};

} // namespace format::cab

#pragma once

#include "formats/cab/records.h"
#include "harbor6/model/format.h"

#include <cstdint>
#include <string_view>

namespace format {

/// What a recogniser knows of its format.
struct record {
    std::uint32_t number;
    std::string_view name;
    std::string_view suffix;
    char separator; ///< between the parts of a stored path
};

} // namespace format

namespace format::cab {

inline constexpr format::record record{35, "cab", ".cab", '\\'};

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

namespace harbor6::cab {

/// The Microsoft Cabinet, described to the host: cabinets are expanded, never made.
class Format : public SuperFormat {
public:
    explicit Format(HarborShell* shell);
    ~Format() override;

    Archive* _newArchiveAtItem(File* file, unsigned mode) override;
    format::classifier* _newClassifier() override;
};

} // namespace harbor6::cab

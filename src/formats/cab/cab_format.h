#pragma once

#include "formats/cab/cab_records.h"
#include "harbor6/model/format.h"

#include <cstdint>
#include <string_view>

namespace format {

/// The constants that describe a format to its recogniser.
struct record {
    std::uint32_t number;
    std::string_view name;
    std::string_view suffix;
    char separator; ///< between the components of a stored path
};

} // namespace format

namespace format::cab {

inline constexpr format::record record{35, "cab", ".cab", '\\'};

/// Recognises cabinets in the bytes of `sample`, which the host sets and owns. Neither test depends on the
/// other. Each confirm_at reads into the same header, so a classifier serves one call at a time.
class classifier : public format::classifier {
public:
    explicit classifier(std::uint32_t identifier);
    ~classifier() override;

    /// 1 if the signature is at `offset` of the sample with at least one more byte behind it, otherwise 0.
    unsigned matches_at(unsigned offset) const override;
    /// Whether a cabinet header with the right signature and checksum is at `offset` of the sample, and the
    /// cabinet doesn't continue an earlier one. Another version or a next cabinet is accepted, so that
    /// expansion refuses it with a message. A sample that ends inside the fixed header raises
    /// stream::exception.
    bool confirm_at(unsigned offset) override;
    /// The same for a cabinet that does.
    bool continues_at(unsigned offset) override;
    std::string_view leading_bytes() const override;
    /// The size that the header states. 0 unless the version is known, and sizes, offsets and the first
    /// records agree with each other; what the input doesn't hold counts as sound.
    std::uint64_t measure(stream::input& archive) override;

private:
    archive_header header;
};

} // namespace format::cab

namespace harbor6::cab {

/// The Microsoft Cabinet format as the host sees it: it expands archives and creates none.
class Format : public SuperFormat {
public:
    explicit Format(HarborShell* shell);
    ~Format() override;

    /// A new archive, counted for the caller, on the cabinet that `file` stores.
    Archive* _newArchiveAtItem(File* file, unsigned mode) override;
    /// A new recogniser of cabinets, which the caller owns.
    format::classifier* _newClassifier() override;
};

} // namespace harbor6::cab

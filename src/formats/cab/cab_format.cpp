#include "formats/cab/cab_format.h"

#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_constants.h"
#include "harbor6/groundwork/export.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/file.h"
#include "harbor6/stream/array_input.h"

namespace format::cab {

classifier::classifier(std::uint32_t id) : format::classifier(record.number, id) {}

classifier::~classifier() = default;

unsigned classifier::matches_at(unsigned offset) const {
    if (std::uint64_t{offset} + signature.size() >= sample.length())
        return 0;
    return std::string_view(sample.begin() + offset, signature.size()) == signature ? 1 : 0;
}

bool classifier::confirm_at(unsigned offset) {
    stream::array_input input(sample, offset);
    header.read(input, false);
    return header.is_valid() && !header.has_previous;
}

} // namespace format::cab

namespace harbor6::cab {

namespace {

constexpr std::uint32_t classifier_identifier = 2001;
constexpr std::uint32_t file_type = 0x43414220; // "CAB "

} // namespace

Format::Format(HarborShell* host) : SuperFormat(host) {
    format_name = "cab";
    long_name = "CAB";
    suffixes.push_back(".cab");
    mime_type = "application/x-cab";
    is_folder = true;
    capabilities = expands_archives;
    model.file_info.type.code = file_type;
    model.file_info.creator.code = 0;
}

Format::~Format() = default;

harbor6::Archive* Format::_newArchiveAtItem(File* file, unsigned mode) {
    return new cab::Archive(*this, *file, mode);
}

format::classifier* Format::_newClassifier() {
    return new format::cab::classifier(classifier_identifier);
}

} // namespace harbor6::cab

/// Registers the cabinet format with the host's registry, which owns it from then on, and returns the
/// registry's answer. The one symbol that the plug-in exports.
extern "C" HARBOR6_API bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell) {
    return classifier.addFormat(*new harbor6::cab::Format(shell));
}

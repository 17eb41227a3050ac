#include "plugin/format.h"

#include "archive/cab/archive.h"
#include "model/file.h"
#include "plugin/classifier.h"

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

std::unique_ptr<format::classifier> Format::_newClassifier() {
    return std::make_unique<format::cab::classifier>(classifier_identifier);
}

} // namespace harbor6::cab

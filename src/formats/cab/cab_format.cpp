#include "formats/cab/cab_format.h"

#include "formats/cab/cab_archive.h"
#include "formats/cab/cab_constants.h"
#include "harbor6/groundwork/export.h"
#include "harbor6/model/classifier.h"
#include "harbor6/model/file.h"
#include "harbor6/stream/array_input.h"

#include <algorithm>

namespace format::cab {

namespace {

/// The header's fields of fixed size, and the sizes of reserve areas.
constexpr unsigned tested_size = 40;

} // namespace

classifier::classifier(std::uint32_t id) : format::classifier(record.number, id) {}

classifier::~classifier() = default;

unsigned classifier::matches_at(unsigned offset) const {
    if (std::uint64_t{offset} + signature.size() >= sample.length())
        return 0;
    return std::string_view(sample.begin() + offset, signature.size()) == signature ? 1 : 0;
}

bool classifier::confirm_at(unsigned offset) {
    // Without the names, on which the answer doesn't depend and which may be as long as the sample.
    const auto end = std::min<std::uint64_t>(sample.length(), std::uint64_t{offset} + tested_size);
    stream::array_input input({sample.begin(), static_cast<unsigned>(end)}, offset);
    header.read(input, false);
    return header.is_valid() && !header.has_previous;
}

bool classifier::continues_at(unsigned offset) {
    stream::array_input input(sample, offset);
    header.read(input, false);
    return header.is_valid() && header.has_previous;
}

std::string_view classifier::leading_bytes() const {
    return signature;
}

namespace {

/// Records of each kind that tell a cabinet from a signature in other data.
constexpr std::uint32_t records_to_test = 4;
constexpr std::uint64_t longest_name = 256;
constexpr std::uint64_t header_size = 36;

bool is_sound(const archive_header& header) {
    return header.version == supported_version && header.folder_count != 0 && header.file_count != 0 &&
           header.files_offset >= header_size && header.files_offset < header.cabinet_size;
}

bool is_sound(const folder_header& folder, const archive_header& header) {
    const unsigned method = folder.compression & compression::method_mask;
    const unsigned window = folder.compression >> compression::window_shift & compression::window_mask;
    return method <= compression::lzx && folder.data_offset <= header.cabinet_size &&
           (method != compression::lzx ||
            (window >= compression::smallest_window && window <= compression::largest_window));
}

bool is_sound(const file_header& file, const archive_header& header) {
    return !file.name.empty() && !file.name_shortened &&
           (file.folder_index < header.folder_count || file.folder_index >= continued::from_previous);
}

} // namespace

std::uint64_t classifier::measure(stream::input& archive) {
    const text_rules texts{longest_name, true, true};
    archive_header head;
    head.texts = texts;
    try {
        head.read(archive, false);
    } catch (const format::exception&) {
        return 0;
    }
    if (!is_sound(head) || archive.tell() > head.cabinet_size)
        return 0;
    // Of several records one may be damaged.
    const auto are_sound = [](std::uint32_t count, auto read_next) {
        const auto tested = std::min(count, records_to_test);
        std::uint32_t unsound = 0;
        for (std::uint32_t i = 0; i < tested; ++i)
            unsound += !read_next();
        return unsound == 0 || (unsound == 1 && tested > 1);
    };
    const auto next_folder = [&] {
        folder_header folder;
        folder.reserve = head.reserve.present ? &head.reserve.value : nullptr;
        folder.read(archive, false);
        return is_sound(folder, head);
    };
    const auto next_file = [&] {
        file_header file;
        file.texts = texts;
        file.read(archive, false);
        return is_sound(file, head);
    };
    try {
        if (!are_sound(head.folder_count, next_folder))
            return 0;
        if (archive.seek(head.files_offset) && !are_sound(head.file_count, next_file))
            return 0;
    } catch (const format::exception&) {
        return 0;
    } catch (const stream::exception&) {
        // The input ends here; what it holds is sound.
    }
    return head.cabinet_size;
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

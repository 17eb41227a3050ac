#include "formats/cfb/cfb_format.h"

#include "formats/cfb/cfb_archive.h"
#include "formats/cfb/cfb_records.h"
#include "harbor6/groundwork/endian.h"
#include "harbor6/groundwork/export.h"
#include "harbor6/model/classifier.h"
#include "harbor6/stream/array_input.h"

#include <algorithm>
#include <vector>

namespace format::cfb {

namespace {

constexpr std::uint32_t number = 36;
constexpr std::uint32_t classifier_identifier = 2002;
constexpr std::uint64_t unknown_size = ~std::uint64_t{0};

/// Sectors of the table that may be all free at its end.
constexpr unsigned free_table_sectors = 16;
/// Those of a document of 64 GiB: a list of them that leads in a circle must not be followed for long.
constexpr std::uint32_t most_table_sectors = 1u << 20;

/// Reads single numbers of the table that says where the table of sectors is.
class table_places {
public:
    table_places(const file_header& head, stream::input& bytes) : header(head), input(bytes) {}

    /// The sector of the `index`th part of the table; free_sector if it can't be read.
    std::uint32_t operator()(std::uint32_t index) const {
        if (index < header_fat_numbers)
            return header.fat[index];
        index -= header_fat_numbers;
        const auto in_sector = header.numbers_per_sector() - 1; // the last one is the next sector
        auto sector = header.first_difat_sector;
        for (; index >= in_sector && sector <= last_sector; index -= in_sector)
            sector = number_at(sector, in_sector);
        return sector <= last_sector ? number_at(sector, index) : free_sector;
    }
    std::uint32_t number_at(std::uint32_t sector, std::uint32_t index) const {
        char bytes[4];
        const bool read =
            input.seek(header.place_of(sector) + 4 * std::uint64_t{index}) && input.read(bytes, 4) == 4;
        return read ? endian::load_le32(bytes) : free_sector;
    }

private:
    const file_header& header;
    stream::input& input;
};

} // namespace

classifier::classifier() : format::classifier(number, classifier_identifier) {}

classifier::~classifier() = default;

unsigned classifier::matches_at(unsigned offset) const {
    return offset < sample.length() &&
           std::string_view(sample.begin() + offset, sample.length() - offset).starts_with(signature);
}

bool classifier::confirm_at(unsigned offset) {
    stream::array_input input(sample, offset);
    file_header header;
    header.read(input, false);
    return header.is_valid();
}

std::string_view classifier::leading_bytes() const {
    return signature;
}

std::uint64_t classifier::measure(stream::input& archive) {
    file_header header;
    header.read(archive, false);
    const auto all = archive.size();
    if (header.fat_sectors > all >> header.sector_shift)
        return std::uint64_t{header.fat_sectors} << header.sector_shift; // at least: the document is cut
    if (header.fat_sectors > most_table_sectors)
        return unknown_size;
    const table_places places(header, archive);
    const auto per_sector = header.numbers_per_sector();
    for (std::uint32_t tried = 0; tried < std::min(header.fat_sectors, free_table_sectors); ++tried) {
        const auto part = header.fat_sectors - 1 - tried;
        const auto sector = places(part);
        if (sector > last_sector)
            return unknown_size;
        const auto place = header.place_of(sector);
        std::vector<char> bytes(header.sector_size());
        if (place + bytes.size() > all)
            return place + bytes.size(); // likewise
        if (!archive.seek(place) ||
            archive.read(bytes.data(), static_cast<unsigned>(bytes.size())) != bytes.size())
            return unknown_size;
        for (auto i = per_sector; i > 0; --i)
            if (endian::load_le32(&bytes[4 * (i - 1)]) != free_sector) {
                const auto end = (std::uint64_t{part} * per_sector + i + 1) << header.sector_shift;
                // Some writers leave the end of the last sector away.
                return end > all && end - all < header.sector_size() ? all : end;
            }
    }
    return unknown_size;
}

} // namespace format::cfb

namespace harbor6::cfb {

Format::Format(HarborShell* host) : SuperFormat(host) {
    format_name = "cfb";
    long_name = "Compound document";
    suffixes = {".msi", ".msp", ".msm", ".mst"};
    mime_type = "application/x-ole-storage";
    is_folder = true;
    capabilities = expands_archives;
}

Format::~Format() = default;

harbor6::Archive* Format::_newArchiveAtItem(File* file, unsigned mode) {
    return new cfb::Archive(*this, *file, mode);
}

format::classifier* Format::_newClassifier() {
    return new format::cfb::classifier;
}

} // namespace harbor6::cfb

/// Registers the format with the host's registry, which owns it from then on, and returns the registry's
/// answer. The one symbol that the plug-in exports.
extern "C" HARBOR6_API bool loadFormats(harbor6::Classifier& classifier, harbor6::HarborShell* shell) {
    return classifier.addFormat(*new harbor6::cfb::Format(shell));
}

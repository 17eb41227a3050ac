#include "format/cab/archive_header.h"

#include "format/cab/checksum.h"
#include "format/cab/constants.h"
#include "format/cab/text_field.h"
#include "outside/groundwork/exception.h"
#include "stream/endian_input.h"

namespace format::cab {

namespace {

void require(bool sound, const char* refusal) {
    if (!sound)
        throw format::exception(refusal, "format::cab::archive_header");
}

void read_pair(stream::input& input, optional_field<std::string>& cabinet,
               optional_field<std::string>& disk) {
    cabinet = {read_name(input), true};
    disk = {read_text(input), true};
}

} // namespace

reserved_header::~reserved_header() = default;

std::uint32_t reserved_header::read(stream::input& input, bool /*verify*/) {
    input.mark = input.tell();
    stream::little_endian_input fields(input);
    header_size = fields.read16();
    folder_size = static_cast<std::uint8_t>(fields.read8());
    data_size = static_cast<std::uint8_t>(fields.read8());
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

archive_header::~archive_header() = default;

bool archive_header::is_valid() const {
    return std::string_view(signature.data(), signature.size()) == cab::signature &&
           (stored_checksum == 0 || stored_checksum == computed_checksum);
}

void archive_header::read_fixed_fields(stream::input& input, bool verify) {
    checksum sum;
    algorithm::digest_input counted(&input, &sum);
    stream::little_endian_input fields(counted);
    sum.enabled = false;

    signature = {};
    fields.read(signature.data(), static_cast<unsigned>(signature.size()));
    if (verify)
        require(std::string_view(signature.data(), signature.size()) == cab::signature,
                "bad header artifact");
    stored_checksum = fields.read32();

    sum.reset();
    cabinet_size = fields.read32();
    reserved_word_1 = fields.read32();
    files_offset = fields.read32();
    reserved_word_2 = fields.read32();
    version = fields.read16();
    if (verify)
        require(version == supported_version, "unsupported cabinet version");
    folder_count = fields.read16();
    file_count = fields.read16();
    flags = fields.read16();
    has_previous = flags & header_flag::previous;
    has_next = flags & header_flag::next;
    has_reserve = flags & header_flag::reserve;
    set_id = fields.read16();
    cabinet_index = fields.read16();
    if (verify)
        require(cabinet_index != no_cabinet_index, "invalid cabinet index");
    computed_checksum = sum.value;
    if (verify)
        require(is_valid(), "archive header CRC error");
}

std::uint32_t archive_header::read(stream::input& input, bool verify) {
    input.mark = input.tell();
    read_fixed_fields(input, verify);

    // What follows isn't covered by the checksum.
    reserve = {};
    if (has_reserve) {
        stream::little_endian_input inner(input); // which keeps a mark of its own
        reserve.present = true;
        reserve.value.read(inner, true);
        inner.skip(reserve.value.header_size);
    }
    if (has_previous)
        read_pair(input, previous_cabinet, previous_disk);
    if (has_next)
        read_pair(input, next_cabinet, next_disk);
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

} // namespace format::cab

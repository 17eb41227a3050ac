#include "formats/cab/cab_records.h"

#include "formats/cab/cab_checksum.h"
#include "formats/cab/cab_constants.h"
#include "formats/cab/cab_published_rules.h"
#include "harbor6/groundwork/endian.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/stream/endian_input.h"
#include "harbor6/stream/input.h"

#include <algorithm>

namespace format::cab {

namespace {

constexpr unsigned word_size = 4;
constexpr unsigned byte_bits = 8;

void require(bool sound, const char* refusal) {
    if (!sound)
        throw format::exception(refusal, "format::cab::archive_header");
}

/// Reads a text field up to a zero byte, which is consumed too, or the end of the stream. Returns whether all
/// of it was kept in `text`.
bool read_text(stream::input& input, const text_rules& rules, std::string& text) {
    std::uint64_t length = 0;
    text.clear();
    int byte = input.read();
    for (; byte > 0; byte = input.read())
        if (length++ < rules.longest)
            text.push_back(static_cast<char>(byte));
        else if (rules.must_fit)
            throw format::exception("text too long", "format::cab");
    if (byte < 0 && rules.must_end)
        throw stream::cut_short(input.tell(), "format::cab");
    return length <= rules.longest;
}

/// The same for a field that is a file name.
bool read_name(stream::input& input, const text_rules& rules, std::string& name, int encoding = -1) {
    const bool whole = read_text(input, rules, name);
    name = nio::to_utf8(nio::decode(name, encoding));
    return whole;
}

void read_pair(stream::input& input, const text_rules& rules, optional_field<std::string>& cabinet,
               optional_field<std::string>& disk) {
    read_name(input, rules, cabinet.value);
    cabinet.present = true;
    read_text(input, rules, disk.value);
    disk.present = true;
}

/// Skips the reserve bytes of a record. With `verify` all of them must be there.
void skip_reserve(stream::input& fields, std::uint64_t size, bool verify, const char* reporting_class) {
    if (fields.skip(size) < size && verify)
        throw format::exception("unexpected end of input stream", reporting_class);
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

    // The checksum doesn't cover what follows.
    reserve = {};
    if (has_reserve) {
        // Reading the sizes sets the mark of this stream, not that of `input`.
        stream::little_endian_input inner(input);
        reserve.present = true;
        reserve.value.read(inner, true);
        inner.skip(reserve.value.header_size);
    }
    if (has_previous)
        read_pair(input, texts, previous_cabinet, previous_disk);
    if (has_next)
        read_pair(input, texts, next_cabinet, next_disk);
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

folder_header::~folder_header() = default;

std::uint32_t folder_header::read(stream::input& input, bool verify) {
    input.mark = input.tell();
    stream::little_endian_input fields(input);
    data_offset = fields.read32();
    block_count = fields.read16();
    compression = fields.read16();
    if (reserve)
        skip_reserve(fields, reserve->folder_size, verify, "format::cab::folder_header");
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

file_header::~file_header() = default;

std::uint32_t file_header::read(stream::input& input, bool /*verify*/) {
    input.mark = input.tell();
    stream::little_endian_input fields(input);
    size = fields.read32();
    folder_offset = fields.read32();
    folder_index = fields.read16();
    continued_from_previous = folder_index == continued::from_previous;
    continued_to_next = folder_index == continued::to_next;
    continued_both = folder_index == continued::both;
    const auto dos_date = fields.read16();
    const auto dos_time = fields.read16();
    time.set_dos(dos_date, dos_time);
    attributes.from_dos_flags(fields.read16());

    // Only after decoding: in some code pages the second byte of a letter is a backslash.
    const bool is_utf8 = texts.utf8_flag && attributes.utf8_name;
    name_shortened = !read_name(input, texts, name, is_utf8 ? nio::encoding_utf8 : -1);
    // It stays too long, however short the part that was kept is once it is decoded.
    if (name_shortened && name.size() < texts.longest)
        name.resize(texts.longest, '?');
    std::replace(name.begin(), name.end(), '\\', '/');
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

data_header::~data_header() = default;

bool data_header::is_valid() const {
    return stored_checksum == computed_checksum;
}

std::uint32_t data_header::read(stream::input& input, bool verify) {
    received = 0;
    input.mark = input.tell();
    checksum sum;
    algorithm::digest_input counted(&input, &sum);
    stream::little_endian_input fields(counted);
    sum.enabled = false;
    stored_checksum = fields.read32();

    sum.reset();
    compressed_size = fields.read16();
    uncompressed_size = fields.read16();
    if (reserve)
        skip_reserve(fields, reserve->data_size, verify, "format::cab::data_header");

    const auto length = static_cast<unsigned>(compressed_size);
    const auto tail = length % word_size;
    read_words(fields, length - tail);
    computed_checksum = sum.value;
    read_tail(input, tail);
    if (stored_checksum != 0 && stored_checksum != computed_checksum)
        throw format::crc_exception("CRC mismatch, data is invalid", "format::cab::data_header");

    input.unread(payload.get(), length);
    return static_cast<std::uint32_t>(input.tell() - input.mark);
}

bool data_header::read_published(stream::input& input) {
    char head[published::largest_block_head];
    const auto fill = [&input](char* bytes, unsigned length) {
        const auto got = input.read(bytes, length);
        if (got < length)
            throw stream::cut_short(input.tell(), "format::cab::data_header");
    };
    received = 0;
    const auto fields = static_cast<unsigned>(word_size + (reserve ? reserve->data_size : 0));
    fill(head, word_size + fields);
    stored_checksum = endian::load_le32(head);
    compressed_size = endian::load_le16(head + word_size);
    uncompressed_size = endian::load_le16(head + word_size + 2);
    make_room();
    const auto length = static_cast<unsigned>(compressed_size);
    received = input.read(payload.get(), length);
    if (received < length)
        throw stream::cut_short(input.tell(), "format::cab::data_header");
    if (stored_checksum == 0)
        return true;
    computed_checksum = published::checksum_of({payload.get(), length}, {head + word_size, fields});
    return is_valid();
}

void data_header::skip(stream::input& input) {
    stream::little_endian_input fields(input);
    stored_checksum = fields.read32();
    compressed_size = fields.read16();
    uncompressed_size = fields.read16();
    const auto length = compressed_size + (reserve ? reserve->data_size : 0);
    if (fields.skip(length) < length)
        throw stream::cut_short(input.tell(), "format::cab::data_header");
}

void data_header::make_room() {
    if (payload && capacity >= compressed_size)
        return;
    payload = std::make_unique_for_overwrite<char[]>(compressed_size);
    capacity = compressed_size;
}

/// Reads the whole words of the payload through the checksum.
void data_header::read_words(stream::input& counted, unsigned length) {
    make_room();
    received = counted.read(payload.get(), length);
    std::fill(payload.get() + received, payload.get() + length, '\0');
}

/// Reads the last bytes, fewer than a word. In the checksum they count in the opposite order: the last one is
/// the lowest.
void data_header::read_tail(stream::input& input, unsigned length) {
    char* const bytes = payload.get() + (compressed_size - length);
    for (unsigned i = 0; i < length; ++i) {
        const int byte = input.read();
        bytes[i] = byte < 0 ? '\0' : static_cast<char>(byte);
        received += byte >= 0;
        computed_checksum ^= std::uint32_t{static_cast<unsigned char>(bytes[i])}
                             << byte_bits * (length - 1 - i);
    }
}

} // namespace format::cab

#include "formats/cfb/cfb_records.h"

#include "harbor6/groundwork/endian.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/groundwork/text.h"
#include "harbor6/stream/input.h"

#include <algorithm>

namespace format::cfb {

namespace {

using endian::load_le16;
using endian::load_le32;

/// Appends one UTF-16 unit of a packed name.
void unpack(char16_t unit, std::wstring& name) {
    const auto letter = [](unsigned index) { return static_cast<wchar_t>(packed_alphabet[index % 64]); };
    if (unit >= packed_pair && unit < packed_single)
        (name += letter(unit - packed_pair)) += letter((unit - packed_pair) / 64u);
    else if (unit >= packed_single && unit < table_mark)
        name += letter(unit - packed_single);
    else
        name += unit == table_mark ? L'!' : static_cast<wchar_t>(unit);
}

constexpr bool is_high(wchar_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

constexpr bool is_low(wchar_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

} // namespace

file_header::~file_header() = default;

bool file_header::is_valid() const {
    return sound;
}

std::uint32_t file_header::read(stream::input& input, bool verify) {
    std::array<char, header_size> bytes;
    if (input.read(bytes.data(), header_size) != header_size)
        throw stream::exception("unexpected end of stream", "format::cfb::file_header");
    version = load_le16(&bytes[26]);
    sector_shift = load_le16(&bytes[30]);
    fat_sectors = load_le32(&bytes[44]);
    first_directory_sector = load_le32(&bytes[48]);
    mini_cutoff = load_le32(&bytes[56]);
    first_mini_fat_sector = load_le32(&bytes[60]);
    first_difat_sector = load_le32(&bytes[68]);
    for (unsigned i = 0; i < header_fat_numbers; ++i)
        fat[i] = load_le32(&bytes[header_fat_offset + 4 * i]);
    sound = std::string_view(bytes.data(), bytes.size()).starts_with(signature) &&
            load_le16(&bytes[28]) == little_endian_mark && load_le16(&bytes[32]) == mini_shift &&
            ((version == 3 && sector_shift == sector_shift_3) ||
             (version == 4 && sector_shift == sector_shift_4));
    if (verify && !sound)
        throw format::exception("bad header of a compound document", "format::cfb::file_header");
    return header_size;
}

directory_entry::directory_entry(const char* bytes)
    : type(static_cast<unsigned char>(bytes[66])), left(load_le32(bytes + 68)), right(load_le32(bytes + 72)),
      child(load_le32(bytes + 76)), first_sector(load_le32(bytes + 116)),
      size(endian::load_le64(bytes + 120)) {
    const unsigned units = std::min(load_le16(bytes + 64) / 2u, longest_name);
    for (unsigned i = 0; i + 1 < units; ++i)
        name += static_cast<char16_t>(load_le16(bytes + 2 * i));
}

std::string directory_entry::text(bool packed) const {
    std::wstring units;
    for (const char16_t unit : name)
        packed ? unpack(unit, units) : units.push_back(static_cast<wchar_t>(unit));
    std::wstring wide;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const wchar_t unit = units[i];
        if (is_high(unit) && i + 1 < units.size() && is_low(units[i + 1]))
            wide += static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00));
        else if (unit < L' ' || unit == L'/' || unit == L'\\' || unit == 0x7F)
            wide += L'[' + std::to_wstring(static_cast<int>(unit)) + L']';
        else
            wide += unit;
    }
    return nio::to_utf8(wide);
}

} // namespace format::cfb

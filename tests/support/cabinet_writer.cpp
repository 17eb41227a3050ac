#include "support/cabinet_writer.h"

#include "support/zlib_streams.h"

#include <algorithm>
#include <utility>

namespace support {

namespace {

std::string number(std::uint64_t value, unsigned size) {
    std::string bytes;
    for (unsigned i = 0; i < size; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i)));
    return bytes;
}

/// The exclusive or of the little-endian words of `bytes`, the last one filled up with zeros.
std::uint32_t checksum_of(std::string_view bytes) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        sum ^= std::uint32_t{static_cast<unsigned char>(bytes[i])} << (8 * (i % 4));
    return sum;
}

std::deque<block_record> blocks_of(const folder_record& folder) {
    const auto encode = (folder.compression & 0x0F) == mszip ? mszip_encoder() : nullptr;
    std::deque<block_record> blocks;
    for (std::size_t at = 0; at < folder.content.size(); at += folder.block_size) {
        const auto piece = folder.content.substr(at, folder.block_size);
        block_record& block = blocks.emplace_back();
        block.payload = encode ? encode(piece) : piece;
        block.uncompressed_size = static_cast<std::uint16_t>(piece.size());
        if (!folder.checksums)
            block.checksum = 0;
    }
    blocks.insert(blocks.end(), folder.blocks.begin(), folder.blocks.end());
    return blocks;
}

std::string header_extras(const header_record& header) {
    std::string bytes;
    if (const auto& reserve = header.reserve)
        bytes +=
            number(reserve->header_size.value_or(static_cast<std::uint16_t>(reserve->header.size())), 2) +
            number(reserve->folder_size, 1) + number(reserve->data_size, 1) + reserve->header;
    for (const auto& names : {header.previous, header.next})
        if (names)
            bytes += names->cabinet + '\0' + names->disk + '\0';
    return bytes;
}

/// The header record, and everything behind it.
std::pair<std::string, std::string> make(const cabinet& source) {
    constexpr std::size_t fixed_size = 36, folder_size = 8;
    const header_record& header = source.header;
    const auto reserve = header.reserve.value_or(reserve_area{});
    const auto extras = header_extras(header);
    const auto files_offset =
        fixed_size + extras.size() + source.folders.size() * (folder_size + reserve.folder_size);
    std::string folders, files, data;
    for (const auto& file : source.files)
        files += bytes_of(file);
    for (const auto& folder : source.folders) {
        const auto blocks = blocks_of(folder);
        folders += number(files_offset + files.size() + data.size(), 4) +
                   number(folder.block_count.value_or(static_cast<std::uint16_t>(blocks.size())), 2) +
                   number(folder.compression, 2) + std::string(reserve.folder_size, '\0');
        for (const auto& block : blocks)
            data += bytes_of(block, reserve.data_size);
    }
    const int flags =
        header.flags | (header.previous ? 1 : 0) | (header.next ? 2 : 0) | (header.reserve ? 4 : 0);
    const auto covered =
        number(files_offset + files.size() + data.size(), 4) + number(0, 4) + number(files_offset, 4) +
        number(0, 4) + number(header.version, 2) +
        number(header.folder_count.value_or(static_cast<std::uint16_t>(source.folders.size())), 2) +
        number(source.files.size(), 2) + number(static_cast<unsigned>(flags), 2) + number(0, 2) +
        number(header.cabinet_index, 2);
    const auto checksum = header.checksum.value_or(checksum_of(covered));
    return {header.signature + number(checksum, 4) + covered + extras, folders + files + data};
}

} // namespace

std::string bytes_of(const file_record& file) {
    return number(file.size, 4) + number(file.folder_offset.value_or(0), 4) + number(file.folder_index, 2) +
           number(file.date, 2) + number(file.time, 2) + number(file.attributes, 2) + file.name +
           std::string(file.terminated ? 1 : 0, '\0');
}

std::string bytes_of(const block_record& block, unsigned reserve_size) {
    std::string reserve = block.reserve;
    reserve.resize(reserve_size);
    const auto size = static_cast<std::uint16_t>(block.payload.size());
    const auto fields = number(size, 2) + number(block.uncompressed_size.value_or(size), 2) + reserve;
    const std::size_t words = block.payload.size() / 4 * 4;
    std::uint32_t tail = 0; // the bytes after the last whole word, big-endian
    for (const char byte : block.payload.substr(words))
        tail = tail << 8 | static_cast<unsigned char>(byte);
    const auto sum = checksum_of(fields + block.payload.substr(0, words)) ^ tail;
    return number(block.checksum.value_or(sum), 4) + fields + block.payload;
}

cabinet& cabinet::file(const std::string& name, std::string_view content) {
    folder_record& into = last_folder();
    files.push_back({.name = name,
                     .size = static_cast<std::uint32_t>(content.size()),
                     .folder_offset = static_cast<std::uint32_t>(into.content.size()),
                     .folder_index = static_cast<std::uint16_t>(folders.size() - 1)});
    into.content += content;
    return *this;
}

cabinet& cabinet::file(const file_record& record) {
    std::uint32_t behind = 0;
    for (const auto& each : files)
        if (each.folder_index == record.folder_index)
            behind = each.folder_offset.value_or(0) + each.size;
    files.push_back(record);
    files.back().folder_offset = record.folder_offset.value_or(behind);
    return *this;
}

std::string cabinet::bytes() const {
    const auto [header_record, rest] = make(*this);
    return header_record + rest;
}

std::string cabinet::header_bytes() const {
    return make(*this).first;
}

std::string cut(std::string bytes, std::size_t length) {
    bytes.resize(std::min(length, bytes.size()));
    return bytes;
}

std::string flip(std::string bytes, std::size_t place, int mask) {
    bytes.at(place) = static_cast<char>(bytes.at(place) ^ mask);
    return bytes;
}

std::function<std::string(std::string_view)> mszip_encoder(int level) {
    return [level, history = std::string()](std::string_view piece) mutable {
        auto packed = "CK" + zlib_streams::compress(piece, level, zlib_streams::standard, history);
        history += piece;
        history.erase(0, history.size() - std::min<std::size_t>(history.size(), 32768));
        return packed;
    };
}

} // namespace support

#include "cabinet_mutator.h"

#include "support/zlib_streams.h"

#include <algorithm>
#include <utility>

namespace cabinet_mutator {

namespace {

using support::block_record;
using support::cabinet;
using support::file_record;

constexpr std::size_t most_records = 64;

/// Reads from the front of a text; behind its end everything is 0 or empty, and `whole` false.
struct reader {
    std::uint32_t number(unsigned size) {
        std::uint32_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value |= std::uint32_t{byte()} << (8 * i);
        return value;
    }
    std::uint16_t word() { return static_cast<std::uint16_t>(number(2)); }
    std::string bytes(std::size_t length) {
        whole = whole && length <= left.size();
        std::string taken(left.substr(0, length));
        left.remove_prefix(taken.size());
        return taken;
    }
    std::string text() {
        const auto end = left.find('\0');
        whole = whole && end != left.npos;
        std::string taken(left.substr(0, end));
        left.remove_prefix(end == left.npos ? left.size() : end + 1);
        return taken;
    }
    unsigned char byte() {
        const auto taken = bytes(1);
        return taken.empty() ? std::uint8_t{0} : static_cast<unsigned char>(taken[0]);
    }

    std::string_view left;
    bool whole = true;
};

block_record read_block(reader& in, unsigned reserve_size) {
    block_record block;
    const bool unchecked = in.number(4) == 0;
    const auto size = in.word();
    block.uncompressed_size = in.word();
    block.reserve = in.bytes(reserve_size);
    block.payload = in.bytes(size);
    if (unchecked)
        block.checksum = 0;
    return block;
}

unsigned roll(std::mt19937& dice, std::size_t below) {
    return static_cast<unsigned>(std::uniform_int_distribution<std::size_t>(0, below - 1)(dice));
}

/// Values at which readers go wrong.
std::uint32_t border(std::mt19937& dice) {
    constexpr std::uint32_t values[] = {0,      1,      2,      3,      32767,      32768,      32769,
                                        65533,  65534,  65535,  65536,  0x7FFFFFFF, 0x80000000, 0xFFFFFFFF,
                                        0x1103, 0x1503, 0x0F03, 0x1603, 0x1203,     0x0002,     0x000F};
    const auto value = values[roll(dice, std::size(values))];
    return roll(dice, 3) ? value : value + roll(dice, 5) - 2;
}

template<class T>
auto& any_of(T& list, std::mt19937& dice) {
    return list[roll(dice, list.size())];
}

/// Removes, doubles or moves an element.
template<class T>
void rearrange(T& list, std::mt19937& dice) {
    const auto at = [&] { return list.begin() + roll(dice, list.size()); };
    switch (roll(dice, 3)) {
    case 0:
        list.erase(at());
        break;
    case 1: {
        const auto copy = *at();
        if (list.size() < most_records)
            list.insert(at(), copy);
        break;
    }
    default:
        std::iter_swap(at(), at());
    }
}

void edit_file(cabinet& made, std::mt19937& dice, byte_mutator mutate) {
    auto& file = any_of(made.files, dice);
    switch (roll(dice, 6)) {
    case 0:
        file.size = border(dice);
        break;
    case 1:
        file.size = roll(dice, 100000);
        break;
    case 2:
        file.folder_offset = roll(dice, 2) ? border(dice) : roll(dice, 70000);
        break;
    case 3:
        file.folder_index = static_cast<std::uint16_t>(roll(dice, 4) ? roll(dice, 5) : border(dice));
        break;
    case 4:
        file.attributes = static_cast<std::uint16_t>(dice());
        break;
    default:
        file.name = mutate(file.name, 300);
    }
}

void edit_folder(cabinet& made, std::mt19937& dice, byte_mutator mutate) {
    auto& folder = any_of(made.folders, dice);
    switch (roll(dice, 5)) {
    case 0:
        folder.compression = static_cast<std::uint16_t>(roll(dice, 2) ? border(dice) : roll(dice, 4));
        break;
    case 1:
        folder.block_count = static_cast<std::uint16_t>(border(dice));
        break;
    case 2:
        folder.block_count.reset();
        break;
    case 3:
        folder.blocks.push_back({.payload = mutate("CK\3", 100)});
        break;
    default: // as MSZIP
        for (const auto& block : folder.blocks)
            folder.content += block.payload;
        folder.content.resize(std::min<std::size_t>(folder.content.size(), 100000));
        folder.blocks.clear();
        folder.compression = support::mszip;
        folder.block_size = 1 + roll(dice, 40000);
        if (folder.content.size() / folder.block_size > most_records)
            folder.block_size = 32768;
    }
}

void edit_block(support::folder_record& folder, std::mt19937& dice, byte_mutator mutate) {
    auto& block = any_of(folder.blocks, dice);
    switch (roll(dice, 6)) {
    case 0:
        block.uncompressed_size = static_cast<std::uint16_t>(border(dice));
        break;
    case 1:
        block.checksum = roll(dice, 3) ? 0 : border(dice);
        break;
    case 2:
        block.payload.resize(roll(dice, block.payload.size() + 10));
        break;
    default:
        block.payload = mutate(block.payload, 65535);
    }
}

void edit_header(cabinet& made, std::mt19937& dice, byte_mutator mutate) {
    auto& header = made.header;
    switch (roll(dice, 6)) {
    case 0:
        header.checksum.reset();
        break;
    case 1:
        header.flags = static_cast<std::uint16_t>(border(dice));
        break;
    case 2:
        header.cabinet_index = static_cast<std::uint16_t>(border(dice));
        break;
    case 3:
        header.folder_count = static_cast<std::uint16_t>(border(dice));
        break;
    case 4:
        header.previous.emplace(support::neighbour{mutate("a", 20), mutate("b", 20)});
        break;
    default:
        header.reserve.emplace(support::reserve_area{.header = mutate("abc", 100),
                                                     .folder_size = static_cast<std::uint8_t>(dice()),
                                                     .data_size = static_cast<std::uint8_t>(dice())});
    }
}

} // namespace

std::optional<cabinet> parse(std::string_view bytes) {
    reader in{bytes};
    cabinet made;
    made.header.signature = in.bytes(4);
    if (in.left.size() < 32 || made.header.signature != "MSCF")
        return {};
    if (in.number(4) != 0)
        made.header.checksum.reset();
    in.bytes(16);
    made.header.version = in.word();
    const auto folder_count = in.word(), file_count = in.word(), flags = in.word();
    made.header.flags = flags & ~7;
    in.word();
    made.header.cabinet_index = in.word();
    if (flags & 4) {
        auto& reserve = made.header.reserve.emplace();
        const auto size = in.word();
        reserve.folder_size = in.byte();
        reserve.data_size = in.byte();
        reserve.header = in.bytes(size);
    }
    for (auto* const names : {&made.header.previous, &made.header.next})
        if (flags & (names == &made.header.previous ? 1 : 2)) {
            (*names).emplace().cabinet = in.text();
            (*names)->disk = in.text();
        }
    const auto reserve = made.header.reserve.value_or(support::reserve_area{});
    for (unsigned i = 0; i < folder_count && in.whole && i < most_records; ++i) {
        auto& folder = made.folders.emplace_back();
        in.number(4);
        folder.block_count = in.word();
        folder.compression = in.word();
        in.bytes(reserve.folder_size);
    }
    for (unsigned i = 0; i < file_count && in.whole && i < most_records; ++i) {
        file_record file;
        file.size = in.number(4);
        file.folder_offset = in.number(4);
        file.folder_index = in.word();
        file.date = in.word();
        file.time = in.word();
        file.attributes = in.word();
        file.name = in.text();
        made.files.push_back(std::move(file));
    }
    for (auto& folder : made.folders) {
        const auto count = *std::exchange(folder.block_count, std::nullopt);
        while (folder.blocks.size() < count && in.whole && !in.left.empty())
            folder.blocks.push_back(read_block(in, reserve.data_size));
    }
    return made;
}

void edit(cabinet& made, std::mt19937& dice, byte_mutator mutate) {
    if (made.folders.empty() || made.files.empty())
        made.file("a", "hello");
    auto& folder = any_of(made.folders, dice);
    switch (roll(dice, 12)) {
    case 0:
        edit_header(made, dice, mutate);
        break;
    case 1:
        rearrange(made.files, dice);
        break;
    case 2:
        rearrange(made.folders, dice);
        break;
    case 3:
    case 4:
        edit_file(made, dice, mutate);
        break;
    case 5:
        edit_folder(made, dice, mutate);
        break;
    case 6:
        if (!folder.blocks.empty())
            rearrange(folder.blocks, dice);
        break;
    default:
        if (!folder.blocks.empty())
            edit_block(folder, dice, mutate);
    }
}

void join(cabinet& made, const cabinet& other) {
    for (auto file : other.files) {
        file.folder_index = static_cast<std::uint16_t>(file.folder_index + made.folders.size());
        if (made.files.size() < most_records)
            made.files.push_back(std::move(file));
    }
    for (const auto& folder : other.folders)
        if (made.folders.size() < most_records)
            made.folders.push_back(folder);
}

} // namespace cabinet_mutator

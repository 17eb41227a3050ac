#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// Builds compound documents, valid and damaged ones. Siblings are a list: each is the right neighbour of the
/// one before.
struct compound {
    using number_list = std::vector<std::uint32_t>;
    static constexpr std::uint32_t none = 0xFFFFFFFF, end = 0xFFFFFFFE;

    struct entry {
        std::u16string name;
        unsigned type;
        std::size_t parent;
        std::string data{};
        std::uint32_t left = none, right = none, child = none, first = end;
        std::uint64_t size = 0;
    };

    std::size_t storage(const std::u16string& name, std::size_t parent = 0) {
        return entries.push_back({name, 1, parent}), entries.size() - 1;
    }
    compound& stream(const std::u16string& name, const std::string& data, std::size_t parent = 0) {
        return entries.push_back({name, 2, parent, data}), *this;
    }

    std::string bytes() {
        std::string mini;
        for (auto& each : entries) {
            each.size = each.data.size();
            const bool is_short = each.size > 0 && each.size < 4096;
            each.first = is_short ? add(each.data, mini, mini_fat, 64) : add(each.data, sectors, fat, size());
        }
        entries[0].size = mini.size();
        entries[0].first = add(mini, sectors, fat, size());
        for (std::size_t i = entries.size() - 1; i > 0; --i)
            entries[i].right = std::exchange(entries[entries[i].parent].child, static_cast<std::uint32_t>(i));
        directory = add(std::string(128 * entries.size(), '\0'), sectors, fat, size());
        const auto mini_table = add(std::string(4 * mini_fat.size(), '\0'), sectors, fat, size());
        std::size_t tables = 0, lists = 0;
        const auto part = size() / 4 - 1; // numbers in a sector of the list of tables
        while (tables * size() / 4 < fat.size() + tables + lists)
            lists = ++tables <= 109 ? 0 : (tables - 109 + part - 1) / part;
        for (std::size_t i = 0; i < tables + lists; ++i)
            (i < tables ? places : list_places).push_back(static_cast<std::uint32_t>(fat.size() + i));
        fat.resize(fat.size() + tables, 0xFFFFFFFD);
        fat.resize(fat.size() + lists, 0xFFFFFFFC);
        fat.resize(tables * size() / 4, none);
        if (damage)
            damage(*this);

        put(directory, directory_bytes());
        put(mini_table, numbers(mini_fat));
        std::string list;
        for (std::size_t i = 0; i < lists; ++i) {
            number_list some(places.begin() + static_cast<long>(109 + i * part), places.end());
            some.resize(part, none);
            list += numbers(some) + number(i + 1 < lists ? list_places[i + 1] : end, 4);
        }
        auto first = places;
        first.resize(109, none);
        auto header = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(16, '\0') + number(0x3E, 2) +
                      number(shift == 9 ? 3 : 4, 2) + number(0xFFFE, 2) + number(shift, 2) + number(6, 8) +
                      number(0, 4) + number(places.size(), 4) + number(directory, 4) + number(0, 4) +
                      number(4096, 4) + number(mini_table, 4) + number(!mini_fat.empty(), 4) +
                      number(lists ? list_places[0] : end, 4) + number(lists, 4) + numbers(first);
        header.resize(size());
        return header + sectors + numbers(fat) + list;
    }

    unsigned shift = 9;     ///< base-2 logarithm of the sectors' size, or 12
    bool backwards = false; ///< each sector of a chain precedes the one before
    std::vector<entry> entries{{u"Root Entry", 5, 0}};
    std::function<void(compound&)> damage{}; ///< may change entries and what follows, before it is written
    number_list fat{}, mini_fat{};
    number_list places{}, list_places{}; ///< sectors of the FAT, and of the list of those
    std::uint32_t directory = 0;         ///< its first sector

private:
    std::size_t size() const { return std::size_t{1} << shift; }
    /// Appends a chain of sectors to `space`; returns the first.
    std::uint32_t add(const std::string& data, std::string& space, number_list& table,
                      std::size_t unit) const {
        const auto before = static_cast<std::uint32_t>(table.size());
        const auto count = static_cast<std::uint32_t>((data.size() + unit - 1) / unit);
        for (std::uint32_t i = 0; i < count; ++i) {
            const auto part = backwards ? count - 1 - i : i;
            space.append(data, part * unit, unit).resize((before + i + 1) * unit);
            table.push_back(part + 1 == count ? end : backwards ? before + i - 1 : before + i + 1);
        }
        return count == 0 ? end : backwards ? before + count - 1 : before;
    }
    void put(std::uint32_t sector, const std::string& content) {
        for (std::size_t at = 0; at < content.size(); at += size(), sector = fat[sector])
            sectors.replace(sector * size(), std::min(size(), content.size() - at), content, at, size());
    }
    static std::string number(std::uint64_t value, unsigned length) {
        std::string text;
        for (unsigned i = 0; i < length; ++i)
            text += static_cast<char>(value >> 8 * i);
        return text;
    }
    static std::string numbers(const number_list& values) {
        std::string text;
        for (const auto value : values)
            text += number(value, 4);
        return text;
    }
    std::string directory_bytes() const {
        std::string text;
        for (const auto& each : entries) {
            std::string name;
            for (const char16_t unit : each.name)
                name += number(unit, 2);
            name.resize(64);
            text += name + number(2 * each.name.size() + 2, 2) + number(each.type, 1) + number(1, 1) +
                    number(each.left, 4) + number(each.right, 4) + number(each.child, 4) +
                    std::string(36, '\0') + number(each.first, 4) + number(each.size, 8);
        }
        return text;
    }

    std::string sectors;
};

} // namespace support

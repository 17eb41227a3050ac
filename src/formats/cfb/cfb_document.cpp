#include "formats/cfb/cfb_document.h"

#include "harbor6/groundwork/endian.h"
#include "harbor6/groundwork/exception.h"
#include "harbor6/stream/input.h"
#include "harbor6/stream/output.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace format::cfb {

namespace {

constexpr std::uint64_t most_entries = 1u << 18; ///< that are read
constexpr unsigned greatest_depth = 512;         ///< of storages in one another
constexpr std::uint64_t piece_size = 64 * 1024;  ///< of a stream that is copied at once

constexpr char incomplete_table[] = "the table of sectors of the compound document is incomplete";

constexpr char damaged_directory[] = "the directory of the compound document is damaged";

[[noreturn]] void fail(const std::string& text) {
    throw format::exception(text, "format::cfb::document");
}

file_header header_of(stream::input& input) {
    if (input.size() == ~std::uint64_t{0} || !input.seek(0))
        fail("a compound document is not read in order, so it cannot come from a pipe");
    file_header header;
    header.read(input, true);
    return header;
}

/// The last sector may be incomplete.
std::uint64_t sectors_in(std::uint64_t size, const file_header& header) {
    const auto sector = header.sector_size();
    return size <= sector ? 0 : std::min<std::uint64_t>((size - 1) / sector, std::uint64_t{last_sector} + 1);
}

std::uint64_t divided(std::uint64_t size, std::uint64_t by) {
    return size / by + (size % by != 0);
}

} // namespace

std::uint32_t document::sector_space::behind(std::uint32_t sector) const {
    return sector < next.size() ? next[sector] : free_sector;
}

template<class Visit>
const char* document::sector_space::take(std::uint32_t first, std::uint64_t most, std::uint64_t& count,
                                         Visit visit) {
    for (auto sector = first; count < most && sector != end_of_chain; sector = behind(sector), ++count) {
        if (sector >= taken.size())
            return "a chain of sectors leads beyond the end of the file";
        if (taken[sector])
            return "a sector belongs to two chains";
        taken[sector] = true;
        visit(sector);
    }
    return nullptr;
}

template<class Visit>
std::uint64_t document::sector_space::follow(std::uint32_t first, std::uint64_t most, Visit visit) {
    std::uint64_t count = 0;
    if (const auto* const damage = take(first, most, count, visit))
        fail(damage);
    return count;
}

std::uint64_t document::sector_space::length(std::uint32_t first, numbers& known) const {
    known.resize(taken.size());
    numbers chain;
    auto sector = first;
    for (; sector < known.size() && known[sector] == 0; sector = behind(sector)) {
        known[sector] = endless; // unless an end is found; it is if the chain comes here again
        chain.push_back(sector);
    }
    auto count = sector == end_of_chain ? 0 : sector < known.size() ? known[sector] : endless;
    for (; count != endless && !chain.empty(); chain.pop_back())
        known[chain.back()] = ++count;
    return count;
}

/// Notes the damage that `act` comes upon.
template<class Act>
void document::attempt(Act act) {
    try {
        act();
    } catch (const format::exception& failure) {
        if (noted.empty())
            noted = failure.message();
    }
}

document::document(stream::input& storage)
    : input(storage), header(header_of(storage)), sectors(sectors_in(storage.size(), header)),
      mini_sectors(0) {
    attempt([&] { load_fat(); });
    const auto entries = load_directory();
    attempt([&] {
        if (entries.empty() || entries.front().type != entry_type::root)
            fail(damaged_directory);
        attempt([&] { load_mini_stream(entries.front()); });
        list_items(entries);
    });
    share_out_sectors(false);
    share_out_sectors(true);
}

/// Raises format::exception if not all of it is there.
void document::read_at(std::uint64_t place, char* buffer, std::uint64_t length) {
    if (!input.seek(place) || input.read(buffer, static_cast<unsigned>(length)) != length)
        fail("the file ends inside the compound document");
}

/// Appends the numbers in a sector of a table, `most` of them.
void document::append_numbers(std::uint32_t sector, numbers& to, std::uint64_t most) {
    std::vector<char> bytes(4 * std::min<std::uint64_t>(most, header.numbers_per_sector()));
    read_at(header.place_of(sector), bytes.data(), bytes.size());
    for (std::size_t at = 0; at < bytes.size(); at += 4)
        to.push_back(endian::load_le32(&bytes[at]));
}

/// The FAT has a number for each sector of the file, not more whatever the header states.
void document::load_fat() {
    const auto total = sectors.taken.size();
    // What can't be read of the table is left out; the rest of it keeps its place.
    const auto load = [&](std::uint32_t sector) {
        const auto end = std::min<std::uint64_t>(total, sectors.next.size() + header.numbers_per_sector());
        attempt([&] {
            if (sectors.follow(sector, 1, [&](std::uint32_t own) {
                    append_numbers(own, sectors.next, total - sectors.next.size());
                }) == 0)
                fail(incomplete_table);
        });
        sectors.next.resize(end, free_sector);
    };
    auto left = std::min<std::uint64_t>(header.fat_sectors, divided(total, header.numbers_per_sector()));
    for (std::size_t i = 0; i < header_fat_numbers && left > 0; ++i, --left)
        load(header.fat[i]);
    for (auto difat = header.first_difat_sector; left > 0;) {
        numbers part;
        if (sectors.follow(difat, 1, [&](std::uint32_t own) { append_numbers(own, part, ~0u); }) == 0)
            fail(incomplete_table);
        difat = part.back(); // the number of the next one
        part.pop_back();
        for (std::size_t i = 0; i < part.size() && left > 0; ++i, --left)
            load(part[i]);
    }
}

std::vector<directory_entry> document::load_directory() {
    std::vector<directory_entry> entries;
    const auto size = header.sector_size();
    std::vector<char> bytes(size);
    attempt([&] {
        sectors.follow(header.first_directory_sector, ~std::uint64_t{0}, [&](std::uint32_t sector) {
            if (entries.size() >= most_entries)
                fail("the compound document has too many streams");
            read_at(header.place_of(sector), bytes.data(), size);
            for (std::size_t at = 0; at < size; at += entry_size) {
                auto& entry = entries.emplace_back(&bytes[at]);
                // Version 3 has sizes of 32 bits, and writers that leave old bytes behind them.
                if (header.version == 3)
                    entry.size &= 0xFFFFFFFF;
            }
        });
    });
    return entries;
}

void document::load_mini_stream(const directory_entry& root) {
    const auto size = std::min<std::uint64_t>(root.size, sectors.taken.size() << header.sector_shift);
    const auto count = divided(size, mini_size);
    sectors.follow(root.first_sector, divided(size, header.sector_size()),
                   [&](std::uint32_t sector) { mini_stream.push_back(sector); });
    mini_sectors.taken.resize(
        std::min<std::uint64_t>(count, mini_stream.size() * header.sector_size() / mini_size));
    sectors.follow(header.first_mini_fat_sector, divided(count, header.numbers_per_sector()),
                   [&](std::uint32_t sector) {
                       append_numbers(sector, mini_sectors.next, count - mini_sectors.next.size());
                   });
}

/// Goes through the tree of the directory, each entry once, and lists what belongs to it.
void document::list_items(const std::vector<directory_entry>& entries) {
    struct place {
        std::uint32_t parent; ///< an entry
        unsigned depth;       ///< 0: not in the tree
    };
    std::vector<place> places(entries.size());
    std::vector<std::pair<std::uint32_t, place>> waiting;
    bool damaged = false;
    bool too_deep = false;
    const auto add = [&](std::uint32_t entry, const place& at) {
        if (entry != no_entry)
            waiting.emplace_back(entry, at);
    };
    places[0].depth = 1; // nothing leads to the root
    add(entries[0].child, {0, 1});
    while (!waiting.empty()) {
        const auto [number, at] = waiting.back();
        waiting.pop_back();
        if (number >= entries.size() || places[number].depth != 0) {
            damaged = true;
            continue;
        }
        if (at.depth > greatest_depth) {
            too_deep = true;
            continue;
        }
        const auto& entry = entries[number];
        places[number] = at;
        add(entry.right, at);
        add(entry.left, at);
        if (entry.type == entry_type::storage)
            add(entry.child, {number, at.depth + 1});
        else if (entry.type != entry_type::stream)
            damaged = true;
    }
    const auto is_listed = [&](std::uint32_t i) {
        return places[i].depth != 0 && i != 0 &&
               (entries[i].type == entry_type::storage || entries[i].type == entry_type::stream);
    };
    std::vector<std::uint32_t> index(entries.size(), item::at_top); ///< by entry
    std::uint32_t count = 0;
    for (std::uint32_t i = 0; i < entries.size(); ++i)
        if (is_listed(i))
            index[i] = count++;
    const bool packed =
        std::any_of(entries.begin(), entries.end(), [](auto& entry) { return entry.is_table(); });
    for (std::uint32_t i = 0; i < entries.size(); ++i)
        if (is_listed(i))
            listed.push_back({entries[i].text(packed), entries[i].type == entry_type::storage,
                              index[places[i].parent], entries[i].first_sector, entries[i].size});
    if (damaged)
        fail(damaged_directory);
    if (too_deep)
        fail("storages of the compound document lie too deep in one another");
}

/// Finds the sectors of each stream of the one kind. A chain that ends where the size has it end comes first:
/// the one that runs into it is the damaged one.
void document::share_out_sectors(bool short_streams) {
    auto& space = short_streams ? mini_sectors : sectors;
    const auto unit = short_streams ? mini_size : header.sector_size();
    numbers lengths;
    std::vector<item*> later;
    const auto take = [&](item& stream) {
        const auto needed = divided(stream.size, unit);
        stream.damage = space.take(stream.first_sector, needed, stream.sectors, [](std::uint32_t) {});
        if (!stream.damage && stream.sectors < needed)
            stream.damage = "a chain of sectors ends early";
    };
    for (auto& stream : listed) {
        if (stream.is_storage || stream.size == 0 || is_short(stream) != short_streams)
            continue;
        if (space.length(stream.first_sector, lengths) == divided(stream.size, unit))
            take(stream);
        else
            later.push_back(&stream);
    }
    for (auto* const stream : later)
        take(*stream);
}

namespace {

/// Copies ranges of the input, those that follow one another in one go.
class range_copier {
public:
    using reader = std::function<void(std::uint64_t place, char* buffer, std::uint64_t length)>;

    range_copier(reader source, stream::output& output) : read(std::move(source)), target(output) {}

    void add(std::uint64_t from, std::uint64_t count) {
        if (from != place + length || length + count > piece_size)
            flush();
        if (length == 0)
            place = from;
        length += count;
    }
    void flush() {
        if (length == 0)
            return;
        buffer.resize(length);
        const auto count = std::exchange(length, 0);
        read(place, buffer.data(), count);
        target.write(buffer.data(), static_cast<unsigned>(count));
    }

private:
    reader read;
    stream::output& target;
    std::vector<char> buffer;
    std::uint64_t place = 0;
    std::uint64_t length = 0;
};

} // namespace

void document::copy(const item& stream, stream::output& target) {
    range_copier copier([this](auto... range) { read_at(range...); }, target);
    const bool in_mini_stream = is_short(stream);
    const auto& space = in_mini_stream ? mini_sectors : sectors;
    const auto unit = in_mini_stream ? mini_size : header.sector_size();
    const auto per_sector = header.sector_size() / mini_size;
    auto left = stream.size;
    auto sector = stream.first_sector;
    for (std::uint64_t i = 0; i < stream.sectors; ++i, sector = space.behind(sector)) {
        const auto count = std::min(left, unit);
        copier.add(in_mini_stream
                       ? header.place_of(mini_stream[sector / per_sector]) + sector % per_sector * mini_size
                       : header.place_of(sector),
                   count);
        left -= count;
    }
    copier.flush();
    if (stream.damage)
        fail(stream.damage);
}

} // namespace format::cfb

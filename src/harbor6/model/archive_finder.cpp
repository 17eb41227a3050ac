#include "harbor6/model/archive_finder.h"

#include "harbor6/model/classifier.h"
#include "harbor6/model/format.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace harbor6 {

namespace {

constexpr std::size_t window_size = 128 * 1024;
constexpr std::size_t bytes_per_step = 16;

// Measuring archives may cost a few times as much as searching: data made to look like many archives must
// not be read again and again. A seek costs as much as what a file's stream reads after it.
constexpr std::uint64_t first_allowance = 16 * 1024 * 1024;
constexpr std::uint64_t allowance_per_byte = 2;
constexpr std::uint64_t cost_of_seek = 64 * 1024;

} // namespace

/// The search for one format. A place is an index into the window.
struct ArchiveFinder::Search {
    Format* format;
    ::format::classifier* recogniser;
    std::string_view leading;
    std::size_t next = 0; ///< no untested place before it can be an archive of the format
};

/// The stream from the first byte of an archive on, as far as the window and the stream's seeking reach.
class ArchiveFinder::View : public stream::input {
public:
    View(ArchiveFinder& searching, std::uint64_t first) : finder(searching), start(first) {}

    using stream::input::read;

    bool seek(std::uint64_t value) override {
        const auto known = size();
        if (known == FoundArchive::unknown_size ? !in_window(start + value) : value > known)
            return false;
        position = value;
        return true;
    }
    std::uint64_t size() const override {
        const auto all = finder.source.size();
        return all == FoundArchive::unknown_size ? all : all - std::min(start, all);
    }

protected:
    unsigned _read(char* buffer, unsigned wanted) override {
        const auto at = start + position;
        wanted = static_cast<unsigned>(std::min(std::uint64_t{wanted}, finder.allowance));
        unsigned came = 0;
        if (in_window(at)) {
            const auto index = static_cast<std::size_t>(at - finder.base);
            came = static_cast<unsigned>(std::min(std::size_t{wanted}, finder.length - index));
            std::memcpy(buffer, finder.window.get() + index, came);
        }
        if (came < wanted && reach(at + came))
            came += finder.source.read(buffer + came, wanted - came);
        position += came;
        finder.allowance -= std::min(finder.allowance, std::uint64_t{came});
        return came;
    }
    int _read() override {
        char byte = 0;
        return _read(&byte, 1) == 1 ? static_cast<unsigned char>(byte) : -1;
    }
    std::uint64_t _skip(std::uint64_t count) override {
        return seek(position + count) ? count : stream::input::_skip(count);
    }
    std::uint64_t _tell() const override { return position; }

private:
    /// Moves the finder's source to `at`, if it can seek.
    bool reach(std::uint64_t at) {
        if (finder.moved && finder.source.tell() == at)
            return true;
        if (finder.source.size() == FoundArchive::unknown_size || !finder.source.seek(at))
            return false;
        finder.moved = true;
        finder.allowance -= std::min(finder.allowance, cost_of_seek);
        return true;
    }
    bool in_window(std::uint64_t at) const { return at >= finder.base && at < finder.base + finder.length; }

    ArchiveFinder& finder;
    const std::uint64_t start;
};

ArchiveFinder::ArchiveFinder(const Classifier& formats, stream::input& searched)
    : source(searched), window(std::make_unique_for_overwrite<char[]>(window_size)), base(searched.tell()),
      allowance(first_allowance) {
    for (const auto& format : formats.formats())
        if (auto* const recogniser = format->recogniser())
            searches.push_back({format.get(), recogniser, recogniser->leading_bytes()});
}

ArchiveFinder::~ArchiveFinder() = default;

/// Moves the bytes from `place` on to the window's beginning, and fills it up.
void ArchiveFinder::refill() {
    for (auto& search : searches)
        search.next -= place;
    std::memmove(window.get(), window.get() + place, length - place);
    base += place;
    length -= place;
    place = 0;
    at_end = std::exchange(moved, false) && !source.seek(base + length);
    while (!at_end && length < window_size) {
        const auto came = source.read(window.get() + length, static_cast<unsigned>(window_size - length));
        at_end = came == 0;
        length += came;
        allowance += allowance_per_byte * came;
    }
}

/// The first place from `from` on where an archive of the format may begin; `length` if there is none.
std::size_t ArchiveFinder::find(const Search& search, std::size_t from) const {
    const char* const bytes = window.get();
    if (search.leading.empty()) {
        search.recogniser->sample = un::array<char>(bytes, static_cast<unsigned>(length));
        while (from < length && search.recogniser->matches_at(static_cast<unsigned>(from)) == 0)
            ++from;
        search.recogniser->sample = {};
        return from;
    }
    while (from < length) {
        const auto* const hit =
            static_cast<const char*>(std::memchr(bytes + from, search.leading.front(), length - from));
        if (!hit)
            return length;
        from = static_cast<std::size_t>(hit - bytes);
        // The rest may not have been read yet.
        const auto known = std::min(search.leading.size(), length - from);
        if (std::memcmp(hit, search.leading.data(), known) == 0)
            return from;
        // Where the first byte is frequent, looking at some more bytes costs less than a call for each of
        // them.
        const auto end = std::min(length - 1, from + bytes_per_step);
        do
            ++from;
        while (from < end && (bytes[from] != search.leading[0] || bytes[from + 1] != search.leading[1]));
    }
    return length;
}

/// Whether an archive of the format begins at `place`.
bool ArchiveFinder::test(const Search& search, FoundArchive& found) {
    auto& recogniser = *search.recogniser;
    const auto shown = std::min(std::size_t{sample_size}, length - place);
    recogniser.sample = un::array<char>(window.get() + place, static_cast<unsigned>(shown));
    bool confirmed = false;
    try {
        confirmed = recogniser.matches_at(0) != 0 && (recogniser.confirm_at(0) || recogniser.continues_at(0));
    } catch (const stream::exception&) {
        // The stream ends inside the supposed header.
    }
    recogniser.sample = {};
    if (!confirmed)
        return false;
    found = {search.format, base + place, 0, false};
    try {
        View archive(*this, found.offset);
        found.size = recogniser.measure(archive);
    } catch (const stream::exception&) {
        untested = untested || allowance == 0;
        return false; // the stream ends inside its head
    }
    if (allowance != 0)
        return found.size != 0;
    untested = true; // not all of the head was seen
    return false;
}

/// Goes on behind the archive at `place`, and finds out whether it is cut.
void ArchiveFinder::pass(FoundArchive& found) {
    const auto whole = source.size();
    found.cut = found.size != FoundArchive::unknown_size && whole != FoundArchive::unknown_size &&
                found.size > whole - found.offset;
    if (found.cut || found.size == FoundArchive::unknown_size) {
        ++place;
        return;
    }
    if (found.size <= length - place) {
        place += static_cast<std::size_t>(found.size);
        return;
    }
    const auto missing = found.size - (length - place);
    base += length + missing;
    length = place = 0;
    for (auto& search : searches)
        search.next = 0;
    if (source.seek(base)) {
        moved = false;
    } else {
        at_end = moved; // it could seek, and no longer can
        found.cut = at_end || source.skip(missing) < missing;
    }
}

bool ArchiveFinder::next(FoundArchive& found) {
    for (;;) {
        Search* first = nullptr;
        for (auto& search : searches) {
            search.next = find(search, std::max(search.next, place));
            if (!first || search.next < first->next)
                first = &search;
        }
        if (!first)
            return false;
        place = first->next;
        if (!at_end && length - place < sample_size) {
            refill();
        } else if (place == length) {
            return false;
        } else if (test(*first, found)) {
            pass(found);
            return true;
        } else {
            ++first->next;
        }
    }
}

} // namespace harbor6

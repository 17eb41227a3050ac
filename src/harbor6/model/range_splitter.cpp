#include "harbor6/model/range_splitter.h"

#include "harbor6/model/scratch_log.h"
#include "harbor6/stream/multi_output.h"

#include <algorithm>

namespace harbor6 {

RangeSplitter::RangeSplitter(ScratchSpace& scratch) : space(scratch) {}

RangeSplitter::~RangeSplitter() {
    try {
        finish();
    } catch (...) {
    }
}

void RangeSplitter::add(range file) {
    if (file.offset < written && file.size > 0)
        return;
    sorted = sorted && (next == waiting.size() || waiting.back().offset <= file.offset);
    sized += file.size > 0;
    waiting.push_back(std::move(file));
}

bool RangeSplitter::wantsMore() const {
    return sized > 0 || !active.empty() || !deferred.empty();
}

void RangeSplitter::markDamaged(std::uint64_t length) {
    if (!damage.empty() && damage.back().second == written)
        damage.back().second += length;
    else
        damage.emplace_back(written, written + length);
}

void RangeSplitter::start() {
    started = true;
}

void RangeSplitter::write(const char* buffer, unsigned length) {
    if (length == 0)
        return;
    started = true;
    const auto end = written + length;
    if (kept)
        kept->append(buffer, length);
    for (auto& [file, into] : active) {
        // Each of them began before these bytes.
        const auto left = file.offset + file.size - written;
        passed_on += std::min<std::uint64_t>(left, length);
        into->write(buffer, static_cast<unsigned>(std::min<std::uint64_t>(left, length)));
        if (left <= length) {
            into.reset();
            commit(file);
        }
    }
    std::erase_if(active, [](const open_file& each) { return !each.into; });
    while (advanceTo(end))
        begin(takeNext(), buffer, length);
    written = end;
    if (kept && written >= kept_end && (at_once > 1 || active.empty()))
        deliverDeferred();
}

/// Whether a waiting file begins before `end`; it is the next.
bool RangeSplitter::advanceTo(std::uint64_t end) {
    if (!sorted) {
        std::stable_sort(waiting.begin() + static_cast<std::ptrdiff_t>(next), waiting.end(),
                         [](const range& a, const range& b) { return a.offset < b.offset; });
        sorted = true;
    }
    return next < waiting.size() && waiting[next].offset < end;
}

RangeSplitter::range RangeSplitter::takeNext() {
    range file = std::move(waiting[next++]);
    sized -= file.size > 0;
    return file;
}

/// What counts of a file that isn't deferred is what arrives: its stated size may be wrong.
bool RangeSplitter::mayBegin(const range& file) const {
    return passed_on + file.size <= shared_bytes + shared_times * (file.offset + file.size);
}

/// Passes the part of the bytes that `file` covers, its first ones, on to it.
void RangeSplitter::begin(range file, const char* buffer, unsigned length) {
    if (!mayBegin(file)) {
        ++left_out;
        return;
    }
    const auto before = file.size == 0 ? 0 : static_cast<unsigned>(file.offset - written);
    const bool whole = file.size <= length - before;
    const bool others_first = active.size() >= at_once || (at_once == 1 && kept);
    if (others_first && (at_once == 1 ? file.size > 0 : !whole)) {
        defer(std::move(file), buffer + before, length - before);
        return;
    }
    open_file opened{std::move(file), {}};
    opened.into = open(opened.file);
    passed_on += whole ? opened.file.size : length - before;
    opened.into->write(buffer + before, whole ? static_cast<unsigned>(opened.file.size) : length - before);
    if (whole) {
        opened.into.reset();
        commit(opened.file);
    } else {
        active.push_back(std::move(opened));
    }
}

void RangeSplitter::defer(range file, const char* buffer, unsigned length) {
    if (!kept) {
        kept = std::make_unique<ScratchLog>(space);
        kept->append(buffer, length);
        kept_from = file.offset;
        kept_end = 0;
    }
    kept_end = std::max(kept_end, file.offset + file.size);
    passed_on += file.size;
    deferred.push_back(std::move(file));
}

/// Writes the deferred files, as far as their bytes have arrived.
void RangeSplitter::deliverDeferred() {
    constexpr unsigned chunk = 65536;
    const auto bytes = std::make_unique_for_overwrite<char[]>(chunk);
    for (auto& file : deferred) {
        auto into = open(file);
        for (std::uint64_t at = 0; at < file.size;) {
            const auto wanted = static_cast<unsigned>(std::min<std::uint64_t>(chunk, file.size - at));
            const auto got = kept->read(file.offset - kept_from + at, bytes.get(), wanted);
            if (got == 0)
                break;
            into->write(bytes.get(), got);
            at += got;
        }
        into.reset();
        commit(file);
    }
    deferred.clear();
    kept.reset();
}

data::CountedOutput RangeSplitter::open(const range& file) const {
    data::CountedOutput into;
    if (Fork* const fork = file.target->getMainFork())
        into = fork->output(true);
    // Raises counted_ptr_null for a target without a main fork.
    if (auto* const listener = dynamic_cast<stream::segment_listener*>(&*into))
        listener->segment_begins(file.size);
    return into;
}

void RangeSplitter::commit(range& file) {
    const auto target = std::move(file.target);
    if (!target)
        return; // its commit has failed before
    const auto end = file.offset + file.size;
    // The parts begin and end one behind the other.
    const auto part = std::partition_point(damage.begin(), damage.end(),
                                           [&](const auto& each) { return each.second <= file.offset; });
    if (part != damage.end() && part->first < end && damaged)
        damaged(*target);
    target->commitItem();
}

void RangeSplitter::finish() {
    auto begun = std::move(active);
    active.clear();
    for (auto& [file, into] : begun) {
        into.reset();
        ended_early = true;
        commit(file);
    }
    if (kept) {
        ended_early = true;
        deliverDeferred();
    }
    // A file that would begin here has got all that came of it.
    while (started && advanceTo(written + 1)) {
        range file = takeNext();
        ended_early = ended_early || file.size > 0;
        open(file).reset();
        commit(file);
    }
    while (next < waiting.size()) {
        range file = takeNext();
        if (started && file.size == 0) {
            open(file).reset();
            commit(file);
        }
    }
}

} // namespace harbor6

#include "harbor6/model/scratch_log.h"

#include "harbor6/groundwork/exception.h"

#include <algorithm>
#include <cstdlib>

namespace harbor6 {

ScratchSpace::ScratchSpace(std::string chosen, std::uint64_t memory)
    : folder(std::move(chosen)), memory_left(memory) {}

ScratchSpace::~ScratchSpace() = default;

ScratchSpace& ScratchSpace::standard() {
    static ScratchSpace space("/tmp");
    return space;
}

bool ScratchSpace::takeMemory(std::uint64_t bytes) {
    auto left = memory_left.load();
    while (left >= bytes)
        if (memory_left.compare_exchange_weak(left, left - bytes))
            return true;
    return false;
}

void ScratchSpace::returnMemory(std::uint64_t bytes) {
    memory_left += bytes;
}

platform::temporary_file ScratchSpace::createFile() const {
    if (const char* const chosen = std::getenv("TMPDIR"); chosen && *chosen) {
        try {
            return platform::temporary_file(chosen);
        } catch (const fs::Exception&) {
            // The other folder may do.
        }
    }
    return platform::temporary_file(folder);
}

ScratchLog::ScratchLog(ScratchSpace& shared) : space(shared) {}

ScratchLog::~ScratchLog() {
    space.returnMemory(memorySize());
}

std::uint64_t ScratchLog::size() const {
    return length;
}

void ScratchLog::append(const char* bytes, unsigned count) {
    const auto inside = file ? 0 : appendToMemory(bytes, count);
    if (inside == count)
        return;
    if (!file)
        file = space.createFile();
    file->write(length - memorySize(), bytes + inside, count - inside);
    length += count - inside;
}

/// Appends as many bytes as there is memory for, and returns how many.
unsigned ScratchLog::appendToMemory(const char* bytes, unsigned count) {
    unsigned done = 0;
    while (done < count && (length < memorySize() || addPiece())) {
        auto& piece = pieces.back();
        const auto room = std::min(count - done, piece_size - static_cast<unsigned>(piece.size()));
        if (piece.size() + room > piece_size / 2)
            piece.reserve(piece_size);
        piece.insert(piece.end(), bytes + done, bytes + done + room);
        done += room;
        length += room;
    }
    return done;
}

/// Returns false if the space has no memory left.
bool ScratchLog::addPiece() {
    pieces.emplace_back();
    if (space.takeMemory(piece_size))
        return true;
    pieces.pop_back();
    return false;
}

unsigned ScratchLog::read(std::uint64_t offset, char* buffer, unsigned count) const {
    count = static_cast<unsigned>(std::min<std::uint64_t>(count, length - std::min(offset, length)));
    unsigned done = 0;
    while (done < count && offset < memorySize()) {
        const auto& piece = pieces[offset / piece_size];
        const auto within = static_cast<unsigned>(offset % piece_size);
        const auto taken = std::min(count - done, static_cast<unsigned>(piece.size()) - within);
        std::copy_n(piece.data() + within, taken, buffer + done);
        done += taken;
        offset += taken;
    }
    if (done < count)
        file->read(offset - memorySize(), buffer + done, count - done);
    return count;
}

} // namespace harbor6
